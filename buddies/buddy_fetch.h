#pragma once
// The fetch of the user's buddies and of each buddy's recent tracks from the
// web service, one request at a time, each bounded by 30 seconds and given up
// when EventShutdown is set. The recent tracks stay raw until shown.

#include "buddies/buddy_info.h"

namespace cvas
{

class CDlgStatus;

// Fills list with the buddies of the friends feed, in its order; an answer
// that could not be fetched, or an empty one, leaves it empty.
void FetchBuddies(CDlgStatus& progress, CBuddyInfo& list);

// A new list of buddies with their raw recent tracks. It becomes the current
// buddy list when at least one buddy's tracks were fetched. A shutdown stops
// the loop; what was fetched before it still counts.
void FetchAll(CDlgStatus& progress);

} // namespace cvas
