#pragma once
// The two process-wide lists of plays: the incoming list, which the host side
// fills under the queue lock the moment a track qualifies, and the submission
// queue, which belongs to the worker and survives restarts in Queue.xml.

#include "scrobbler/queue/track_record.h"

#include <cstddef>
#include <string>

namespace cvas
{

// Host side: makes the play's record (its time now, in UTC when useUtc is set,
// with the replacement table current now), appends it to the incoming list
// under the queue lock and then sets EventData.
void Enqueue(std::wstring artist, std::wstring album, std::wstring name, int durationSeconds,
             bool useUtc);

// Worker: takes the incoming records under the queue lock, then appends
// them to the end of the queue in order, logs "Added %d entries to queue"
// and saves Queue.xml. Returns false, and does nothing, when the incoming
// list is empty.
bool MoveIncomingToQueue();

// The submission queue. Once the worker runs, only the worker reads or
// changes it (start-up only before the worker starts), so it takes no lock.
TrackList& SubmissionQueue();
std::size_t SubmissionQueueCount();
// The end of a submission pass: the queue becomes the reattempt list, in its
// order; records that leave the queue are freed.
void ReplaceQueueContents(TrackList reattempt);

// Start-up, before the worker starts: the queue from Queue.xml, with the
// replacement table current now.
void LoadQueue();
// Logs "Saving queue to %s ... %d entries" and replaces Queue.xml.
bool SaveQueue();

// The incoming list's length, read under the queue lock.
std::size_t IncomingCount();
// Frees both lists (module unload; tests).
void ClearTrackLists();

} // namespace cvas
