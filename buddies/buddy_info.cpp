#include "buddies/buddy_info.h"

#include "buddies/buddy_feeds.h"
#include "buddies/library_match.h"
#include "support/critical_section.h"

namespace cvas
{
namespace
{

CCriticalSection& BuddyLock()
{
    static CCriticalSection lock;
    return lock;
}

CountedHandle<CBuddyInfo>& Current()
{
    static CountedHandle<CBuddyInfo> current;
    return current;
}

} // namespace

void CBuddy::ParseRecentTracks(IDispatch* automation)
{
    CLock lock(m_parseLock);
    if (rawRecentTracks.empty())
        return;
    if (IsErrorAnswer(rawRecentTracks))
        throw CBuddyFeedError();
    // Made apart and put in place at the end, so that a parse that throws
    // half-way leaves the buddy raw, and one entered again on this thread
    // (the lock lets it in) while a library call handles messages cannot
    // leave its tracks twice.
    std::vector<CountedHandle<CRecentTrack>> tracks;
    for (const CParsedRecentTrack& parsed : ::cvas::ParseRecentTracks(rawRecentTracks))
    {
        auto track = std::make_shared<CRecentTrack>();
        track->artist = parsed.artist;
        track->name = parsed.name;
        track->url = parsed.url;
        track->when = WhenText(UtsSeconds(parsed.uts));
        CLibraryMatch match;
        if (automation != nullptr && MatchInLibrary(automation, track->artist, track->name, match))
        {
            track->libraryFileName = match.fileName;
            track->libraryKey = match.key;
        }
        tracks.push_back(std::move(track));
    }
    recentTracks = std::move(tracks);
    rawRecentTracks.clear();
}

CountedHandle<CBuddyInfo> CurrentBuddyList()
{
    CLock lock(BuddyLock());
    return Current();
}

void PublishBuddyList(CountedHandle<CBuddyInfo> list)
{
    CLock lock(BuddyLock());
    Current() = std::move(list);
}

} // namespace cvas
