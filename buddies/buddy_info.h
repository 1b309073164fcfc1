#pragma once
// The buddies of one fetch and their recent tracks. A buddy keeps the raw
// answer of its recent-tracks feed until it is first shown; then it is
// parsed, matched against the player's library, and emptied, so that a
// buddy is parsed at most once, even when two dialogs show it at once.

#include <oaidl.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "support/counted_handle.h"
#include "support/critical_section.h"

namespace cvas
{

struct CRecentTrack
{
    std::wstring when; // the play time as local calendar text
    std::wstring artist;
    std::wstring name;
    std::wstring url;
    std::wstring libraryFileName; // the first matching file of the library, or empty
    int libraryKey = 0;           // its key, 0 when none matched
};

// The parse of an answer that begins with "Error:".
class CBuddyFeedError : public std::runtime_error
{
public:
    CBuddyFeedError() : std::runtime_error("the recent-tracks feed answered with an error") {}
};

class CBuddy
{
public:
    virtual ~CBuddy() = default;

    // Turns a raw answer into recent tracks, each matched in the library
    // through automation (no match when it is null), then empties the raw
    // answer; a buddy without one is left as it is. It runs under the
    // buddy's lock: of two threads that show the buddy at once, one parses
    // and the other waits, then finds the tracks. An answer that begins
    // with "Error:" raises CBuddyFeedError and leaves the buddy as it was.
    void ParseRecentTracks(IDispatch* automation);

    std::wstring name;
    // Once the buddy is published, the two below change only in
    // ParseRecentTracks; the tracks are read after it has returned.
    std::vector<CountedHandle<CRecentTrack>> recentTracks;
    std::wstring rawRecentTracks;

private:
    CCriticalSection m_parseLock;
};

class CBuddyInfo
{
public:
    virtual ~CBuddyInfo() = default;
    std::vector<CountedHandle<CBuddy>> buddies;
};

// The buddies of the last fetch that got at least one buddy's tracks; empty
// before any. Read and replaced under the buddy lock.
CountedHandle<CBuddyInfo> CurrentBuddyList();
void PublishBuddyList(CountedHandle<CBuddyInfo> list);

} // namespace cvas
