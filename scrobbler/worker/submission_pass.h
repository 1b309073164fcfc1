#pragma once
// One submission pass: a handshake, then one post for each play of the
// submission queue, front to back; afterwards the queue holds only the plays
// kept for another attempt, and is saved.

#include <windows.h>

#include <functional>
#include <string>

#include "scrobbler/network/submission_settings.h"
#include "scrobbler/queue/track_record.h"

namespace cvas
{

// Told of each post's outcome, on the worker thread: whether it succeeded,
// the play, and its status text ("OK", the refusal, or the failing step).
// The plug-in window's list of submitted tracks fills this in.
using SubmissionReport =
    std::function<void(bool succeeded, const CTrackRecord& record, const std::wstring& status)>;

// Runs on the worker thread only. A pass that stops before it posts (no
// connection, no session, a malformed submission URL) or that is cut short
// by the shutdown event leaves the queue as it was.
void RunSubmissionPass(const CSubmissionSettings& settings, HANDLE shutdown,
                       const SubmissionReport& report);

} // namespace cvas
