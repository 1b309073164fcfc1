#pragma once
// What the simulated player is doing: its library, its playlist, the current
// entry, the play state and the position, on simulated time; and a record of
// what the plug-in asked of it, for the summary. Not thread-safe by itself
// (see shared_player.h).

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/player/library_file.h"
#include "tools/player/library_query.h"

namespace cvas::player
{

enum EPlayState
{
    kStopped = 0,
    kPaused = 1,
    kPlaying = 2,
};

struct CQueryRecord
{
    std::wstring text;
    CQueryResult result;
};

struct CPlayerHistory
{
    std::vector<int> plays; // keys of the files started, in order
    std::vector<CQueryRecord> queries;
    std::vector<int> playRequests;               // keys added to play lists
    std::vector<std::pair<long, long>> skinning; // thread id, flag
    int refusedCalls = 0;                        // calls answered with an error
};

class CPlayerModel
{
public:
    using CEventSink = std::function<void(double time, const std::wstring& text)>;

    CPlayerModel(std::vector<CLibraryFile> library, std::vector<std::size_t> playlist,
                 CEventSink events);

    // Simulated seconds since the start.
    double Now() const { return m_now; }
    // Time passes; a playing file that reaches its end (a negative duration
    // has none) gives way to the next entry, and the last one to a stop.
    void Advance(double seconds);

    void Play(std::size_t playlistIndex);
    void Pause();
    void Resume();
    void Seek(double seconds);
    void Stop();
    // A play request: the entry that holds the file, appended when none does.
    void PlayLibraryFile(std::size_t libraryIndex);

    int State() const { return m_state; }
    int Position() const; // whole seconds
    double ExactPosition() const { return m_position; }
    std::size_t PlaylistSize() const { return m_playlist.size(); }
    long CurrentIndex() const { return m_current; } // -1 with an empty playlist
    std::size_t PlaylistFile(std::size_t index) const { return m_playlist.at(index); }
    const CLibraryFile* CurrentFile() const;
    const std::vector<CLibraryFile>& Library() const { return m_library; }
    std::optional<std::size_t> FindKey(int key) const;

    // Runs a query and keeps it for the summary.
    const CQueryResult& Query(const std::wstring& text);
    void RecordPlayRequest(int key);
    void RecordSkinning(long thread, long flag);
    void RecordRefusal(const std::wstring& what);
    // Writes one line of the report at the current time.
    void Event(const std::wstring& text) const;

    const CPlayerHistory& History() const { return m_history; }

private:
    std::wstring Describe(std::size_t playlistIndex) const;

    std::vector<CLibraryFile> m_library;
    std::vector<std::size_t> m_playlist;
    CEventSink m_events;
    double m_now = 0;
    long m_current = -1;
    int m_state = kStopped;
    double m_position = 0;
    CPlayerHistory m_history;
};

} // namespace cvas::player
