#pragma once
// The background thread that does all talking to the submission service. It
// sleeps on EventShutdown and EventData, moves new plays into the submission
// queue and runs a pass whenever the queue holds any.

#include "scrobbler/submission_pass.h"
#include "scrobbler/submission_settings.h"
#include "support/win_handle.h"

namespace cvas
{

// The worker's loop; returns after EventShutdown is set, with the queue
// saved. While the queue is not empty it tries again every retryWaitMs.
void RunSubmissionWorker(const CSubmissionSettings& settings, const SubmissionReport& report);

// Starts RunSubmissionWorker on a module thread of its own; an empty handle
// when the thread could not be started.
CHandle StartSubmissionWorker(CSubmissionSettings settings, SubmissionReport report);

} // namespace cvas
