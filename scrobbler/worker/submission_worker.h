#pragma once
// The background thread that does all talking to the submission service. It
// sleeps on its stop event and EventData, moves new plays into the
// submission queue and runs a pass whenever the queue holds any.

#include "scrobbler/network/submission_settings.h"
#include "scrobbler/worker/submission_pass.h"
#include "support/win_handle.h"

namespace cvas
{

// The worker's loop; returns after stop is set, with the queue saved. While
// the queue is not empty it tries again every retryWaitMs.
void RunSubmissionWorker(const CSubmissionSettings& settings, const SubmissionReport& report,
                         HANDLE stop, HANDLE data);

// How a worker starts. The worker takes duplicates of these handles, so the
// starter may close its own at any time.
struct CWorkerStart
{
    // The manual-reset event that ends this worker. A worker waits on a stop
    // event of its own, which nobody resets: a worker that outlives a stop
    // that timed out still ends at its next wait instead of living on.
    HANDLE stop = nullptr;
    // A worker that was told to stop and had not ended yet, or null. The new
    // worker touches the queue only after it has ended: it then loads
    // Queue.xml itself, as its predecessor saved it, and wakes itself when
    // submitSavedPlays is set and the queue is not empty.
    HANDLE predecessor = nullptr;
    bool submitSavedPlays = false;
};

// Starts the worker on a module thread of its own; an empty handle when the
// thread could not be started.
CHandle StartSubmissionWorker(CSubmissionSettings settings, SubmissionReport report,
                              const CWorkerStart& start);

} // namespace cvas
