#include "scrobbler/submission_worker.h"

#include "scrobbler/engine_state.h"
#include "scrobbler/submission_queue.h"
#include "support/logs.h"
#include "support/module_thread.h"

#include <memory>

namespace cvas
{
namespace
{

class CWorkerThread : public CThreadWork
{
public:
    CWorkerThread(CSubmissionSettings settings, SubmissionReport report)
        : m_settings(std::move(settings)), m_report(std::move(report))
    {
    }
    void Run() override { RunSubmissionWorker(m_settings, m_report); }

private:
    const CSubmissionSettings m_settings;
    const SubmissionReport m_report;
};

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
    DWORD error = 0;
    return StartModuleThread(
        std::make_shared<CWorkerThread>(std::move(settings), std::move(report)), error);
}

} // namespace cvas
