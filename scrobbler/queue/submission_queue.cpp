#include "scrobbler/queue/submission_queue.h"

#include "scrobbler/queue/data_files.h"
#include "scrobbler/queue/engine_state.h"
#include "scrobbler/queue/queue_file.h"
#include "scrobbler/queue/replacements_file.h"
#include "scrobbler/queue/track_time.h"
#include "scrobbler/queue/wire_cut_log.h"
#include "support/logs.h"

namespace cvas
{
namespace
{

TrackList g_incoming; // guarded by QueueLock()
TrackList g_queue;    // the worker's

} // namespace

void Enqueue(std::wstring artist, std::wstring album, std::wstring name, int durationSeconds,
             bool useUtc)
{
    auto record = std::make_unique<CTrackRecord>(std::move(artist), std::move(album),
                                                 std::move(name), std::to_wstring(durationSeconds),
                                                 CurrentTrackTime(useUtc), CurrentReplacements());
    LogWireCuts(*record);
    {
        CLock lock(QueueLock());
        g_incoming.push_back(std::move(record));
    }
    SetEvent(EventData());
}

bool MoveIncomingToQueue()
{
    TrackList taken;
    {
        // The lock guards the incoming list only: a play that qualifies
        // meanwhile never waits for the log or for the save below.
        CLock lock(QueueLock());
        taken.splice(taken.end(), g_incoming);
    }
    if (taken.empty())
        return false;
    const auto added = static_cast<int>(taken.size());
    g_queue.splice(g_queue.end(), taken);
    StatusLog(1, L"Added %d entries to queue", added);
    SaveQueue();
    return true;
}

TrackList& SubmissionQueue()
{
    return g_queue;
}

std::size_t SubmissionQueueCount()
{
    return g_queue.size();
}

void ReplaceQueueContents(TrackList reattempt)
{
    g_queue = std::move(reattempt);
}

void LoadQueue()
{
    LoadQueueFile(QueueFilePath(), CurrentReplacements(), g_queue);
}

bool SaveQueue()
{
    return SaveQueueFile(QueueFilePath(), g_queue);
}

std::size_t IncomingCount()
{
    CLock lock(QueueLock());
    return g_incoming.size();
}

void ClearTrackLists()
{
    CLock lock(QueueLock());
    g_incoming.clear();
    g_queue.clear();
}

} // namespace cvas
