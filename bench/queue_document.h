#pragma once
// The benchmarks' input: a queue document of n tracks, each with artist,
// name, album, duration and time, laid out the way CXmlDocument writes it.

#include <string>
#include <vector>

namespace cvas::bench
{

struct QueueTrack
{
    std::string artist, name, album, duration, time; // UTF-8, unescaped
};

std::vector<QueueTrack> MakeQueueTracks(int count);

// The document as UTF-8 bytes: declaration line, then one element a line.
std::string MakeQueueDocument(const std::vector<QueueTrack>& tracks);

} // namespace cvas::bench
