#pragma once
// The judgement of one play: long enough, played far enough, and matched by
// the user's filter in the player's library; a play that passes is queued.

#include "host/bx_tracks.h"

namespace cvas
{

// Files shorter than this are never submitted.
constexpr unsigned kShortestSubmittedSeconds = 30;

// Judges the snapshot's current file, played position seconds of its
// duration seconds. Does nothing while scrobbling is off or once submitted
// is set. Sets submitted once the file has been judged (queued, too short,
// refused by the filter, or unreadable), so that each play is judged once;
// until it has played far enough it leaves submitted as it is.
void QualifyAndQueue(const CBXTracks& tracks, int position, int duration, bool& submitted);

} // namespace cvas
