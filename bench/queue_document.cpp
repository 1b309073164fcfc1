#include "queue_document.h"

#include <cstdio>

namespace cvas::bench
{
namespace
{

std::string Escaped(const std::string& text)
{
    std::string out;
    for (char c : text)
    {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else
            out += c;
    }
    return out;
}

} // namespace

std::vector<QueueTrack> MakeQueueTracks(int count)
{
    std::vector<QueueTrack> tracks;
    tracks.reserve(static_cast<std::size_t>(count));
    char time[32];
    for (int i = 0; i < count; ++i)
    {
        std::snprintf(time, sizeof time, "2024-%02d-%02d %02d:%02d:%02d", 1 + i % 12, 1 + i % 28,
                      i % 24, i % 60, (i * 7) % 60);
        tracks.push_back(
            {"Artist " + std::to_string(i % 997), "Track " + std::to_string(i) + " caf\xC3\xA9",
             "Album " + std::to_string(i % 331) + " & Co", std::to_string(120 + i % 300), time});
    }
    return tracks;
}

std::string MakeQueueDocument(const std::vector<QueueTrack>& tracks)
{
    std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<queue>\r\n";
    for (const QueueTrack& track : tracks)
    {
        out += "<track>\r\n";
        out += "<artist>" + Escaped(track.artist) + "</artist>\r\n";
        out += "<name>" + Escaped(track.name) + "</name>\r\n";
        out += "<album>" + Escaped(track.album) + "</album>\r\n";
        out += "<duration>" + track.duration + "</duration>\r\n";
        out += "<time>" + track.time + "</time>\r\n";
        out += "</track>\r\n";
    }
    out += "</queue>\r\n";
    return out;
}

} // namespace cvas::bench
