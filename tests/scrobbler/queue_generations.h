#pragma once
// Queues whose whole contents follow from one number, so that a queue read
// back can be checked to be exactly one of them.

#include "scrobbler/queue/track_record.h"

namespace cvas::test
{

// A queue of 1,500 to 3,000 records, some texts outside ASCII.
TrackList QueueGeneration(unsigned generation);

// Whether the queue is exactly some generation; gives its number.
bool IsQueueGeneration(const TrackList& queue, unsigned& generation);

} // namespace cvas::test
