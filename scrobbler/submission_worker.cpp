#include "scrobbler/submission_worker.h"

#include "scrobbler/engine_state.h"
#include "scrobbler/submission_queue.h"
#include "support/logs.h"

#include <process.h>

#include <memory>

namespace cvas
{
namespace
{

struct CWorkerStart
{
    CSubmissionSettings settings;
    SubmissionReport report;
};

unsigned __stdcall WorkerThread(void* start)
{
    const std::unique_ptr<CWorkerStart> owned(static_cast<CWorkerStart*>(start));
    RunSubmissionWorker(owned->settings, owned->report);
    return 0;
}

} // namespace

void RunSubmissionWorker(const CSubmissionSettings& settings, const SubmissionReport& report)
{
    const HANDLE events[2] = {EventShutdown(), EventData()};
    for (;;)
    {
        StatusLog(1, L"Waiting for something to do ...");
        // The count is the worker's own: nothing else changes the queue.
        const DWORD timeout = SubmissionQueueCount() != 0 ? settings.retryWaitMs : INFINITE;
        const DWORD result = WaitForMultipleObjects(2, events, FALSE, timeout);
        StatusLog(1, L"Wait status %u", static_cast<unsigned>(result));
        // Every wake-up, the last one included, takes in the new plays.
        MoveIncomingToQueue();
        if (result == WAIT_OBJECT_0)
        {
            StatusLog(0, L"Told to exit");
            SaveQueue();
            return;
        }
        // A wake-up by EventData is logged with the same word as a time-out.
        if (result == WAIT_TIMEOUT || result == WAIT_OBJECT_0 + 1)
            StatusLog(1, L"Timeout");
        else
            StatusLog(0, L"Unexpected status!");
        if (result == WAIT_FAILED)
        {
            // No wait can work any more; looping would only spin.
            SaveQueue();
            return;
        }
        if (SubmissionQueueCount() != 0)
            RunSubmissionPass(settings, events[0], report);
    }
}

CHandle StartSubmissionWorker(CSubmissionSettings settings, SubmissionReport report)
{
    auto start =
        std::make_unique<CWorkerStart>(CWorkerStart{std::move(settings), std::move(report)});
    const uintptr_t thread = _beginthreadex(nullptr, 0, &WorkerThread, start.get(), 0, nullptr);
    if (thread == 0)
        return CHandle();
    start.release(); // the thread owns it now
    return CHandle(reinterpret_cast<HANDLE>(thread));
}

} // namespace cvas
