#include "scrobbler/worker/submission_worker.h"

#include "scrobbler/queue/engine_state.h"
#include "scrobbler/queue/submission_queue.h"
#include "support/logs.h"
#include "support/module_thread.h"

#include <memory>

namespace cvas
{
namespace
{

// A handle of this process's own, or an empty one for null.
CHandle DuplicateOwnHandle(HANDLE handle)
{
    HANDLE copy = nullptr;
    if (handle == nullptr || !DuplicateHandle(GetCurrentProcess(), handle, GetCurrentProcess(),
                                              &copy, 0, FALSE, DUPLICATE_SAME_ACCESS))
        return CHandle();
    return CHandle(copy);
}

class CWorkerThread : public CThreadWork
{
public:
    CWorkerThread(CSubmissionSettings settings, SubmissionReport report, const CWorkerStart& start)
        : m_settings(std::move(settings)), m_report(std::move(report)),
          m_stop(DuplicateOwnHandle(start.stop)), m_data(DuplicateOwnHandle(EventData())),
          m_predecessor(DuplicateOwnHandle(start.predecessor)),
          m_submitSavedPlays(start.submitSavedPlays),
          m_hasItsHandles(m_stop && m_data && (m_predecessor || start.predecessor == nullptr))
    {
    }
    bool HasItsHandles() const { return m_hasItsHandles; }
    void Run() override
    {
        if (m_predecessor && !TakeOverFromPredecessor())
            return;
        RunSubmissionWorker(m_settings, m_report, m_stop.Get(), m_data.Get());
    }

private:
    // Waits until the predecessor has saved the queue and ended, then loads
    // it. False when this worker is stopped first: the queue, which is not
    // this worker's yet, is left as it is.
    bool TakeOverFromPredecessor()
    {
        StatusLog(0, L"Waiting for the previous AS thread to end");
        const HANDLE events[2] = {m_stop.Get(), m_predecessor.Get()};
        if (WaitForMultipleObjects(2, events, FALSE, INFINITE) != WAIT_OBJECT_0 + 1)
        {
            StatusLog(0, L"Told to exit");
            return false;
        }
        LoadQueue();
        if (SubmissionQueueCount() != 0 && m_submitSavedPlays)
            SetEvent(m_data.Get());
        return true;
    }

    const CSubmissionSettings m_settings;
    const SubmissionReport m_report;
    const CHandle m_stop;
    const CHandle m_data;
    const CHandle m_predecessor;
    const bool m_submitSavedPlays;
    const bool m_hasItsHandles;
};

} // namespace

void RunSubmissionWorker(const CSubmissionSettings& settings, const SubmissionReport& report,
                         HANDLE stop, HANDLE data)
{
    const HANDLE events[2] = {stop, data};
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

CHandle StartSubmissionWorker(CSubmissionSettings settings, SubmissionReport report,
                              const CWorkerStart& start)
{
    auto work = std::make_shared<CWorkerThread>(std::move(settings), std::move(report), start);
    if (!work->HasItsHandles())
        return CHandle();
    DWORD error = 0;
    return StartModuleThread(std::move(work), error);
}

} // namespace cvas
