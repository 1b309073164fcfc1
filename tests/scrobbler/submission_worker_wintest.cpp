#include "scrobbler/network_fixture.h"

#include "scrobbler/queue/engine_state.h"
#include "scrobbler/queue/submission_queue.h"
#include "scrobbler/standin_client.h"
#include "scrobbler/worker/submission_worker.h"
#include "support/text_encoding.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>

using namespace cvas;
using namespace cvas::test;

namespace
{

constexpr DWORD kStopLimitMs = 5000; // what the plug-in waits for the worker
constexpr DWORD kLastChanceMs = 20000;

class WorkerTest : public NetworkTest
{
protected:
    void TearDown() override
    {
        StopWorker();
        NetworkTest::TearDown();
    }
    // The process-wide EventShutdown serves as the worker's stop event.
    void StartWorker(CSubmissionSettings settings, HANDLE predecessor = nullptr)
    {
        worker = StartSubmissionWorker(std::move(settings), Reporter(),
                                       {EventShutdown(), predecessor, true});
        ASSERT_TRUE(worker);
    }
    // Sets EventShutdown and waits as the plug-in does; true when it ended.
    bool StopWorker()
    {
        if (!worker)
            return true;
        SetEvent(EventShutdown());
        const bool ended = WaitForSingleObject(worker.Get(), kStopLimitMs) == WAIT_OBJECT_0;
        if (ended)
            worker.Reset();
        else if (WaitForSingleObject(worker.Get(), kLastChanceMs) != WAIT_OBJECT_0)
        {
            // A worker that never ends would wait on events this test closes;
            // no thread is ever killed, so the whole run stops here.
            ADD_FAILURE() << "the worker did not end within " << kLastChanceMs << " ms more";
            std::fflush(nullptr);
            std::_Exit(1);
        }
        else
            worker.Reset();
        ResetEvent(EventShutdown());
        return ended;
    }
    bool IsWaiting()
    {
        return !StatusTexts().empty() && StatusTexts()[0] == L"Waiting for something to do ...";
    }

    std::size_t CountStatus(const std::wstring& text)
    {
        const auto texts = StatusTexts();
        return static_cast<std::size_t>(std::count(texts.begin(), texts.end(), text));
    }

    CHandle worker;
};

} // namespace

TEST_F(WorkerTest, WaitsWithoutATimeOutOnAnEmptyQueueAndSubmitsOnEventData)
{
    CSubmissionSettings settings = TesterSettings();
    settings.retryWaitMs = 50; // a timed wait would show as many wake-ups
    StartWorker(settings);
    ASSERT_TRUE(WaitFor([this] { return IsWaiting(); }, 5000));
    Sleep(1000);
    EXPECT_EQ(CountStatus(L"Waiting for something to do ..."), 1u) << "then it blocks";
    EXPECT_FALSE(StatusLogHas(L"Wait status 258"));

    // No 30-second wait: EventData wakes it at once.
    Enqueue(L"Artist", L"Album", L"Now", 200, true);
    EXPECT_TRUE(WaitFor([] { return RecordedPlays().size() == 1; }, 5000));
    ASSERT_TRUE(WaitFor([this] { return IsWaiting(); }, 5000));
    EXPECT_TRUE(StatusLogHas(L"Wait status 1"));
    EXPECT_TRUE(StatusLogHas(L"Timeout")) << "an EventData wake-up reads like a time-out";
    EXPECT_TRUE(StatusLogHas(L"Added 1 entries to queue"));
    ASSERT_TRUE(StopWorker());
    EXPECT_TRUE(StatusLogHas(L"Told to exit"));
    EXPECT_TRUE(QueueFileNames().empty());
}

TEST_F(WorkerTest, RetriesAFailedPassAfterItsWait)
{
    Script(L"handshake=failed:Down");
    CSubmissionSettings settings = TesterSettings();
    settings.retryWaitMs = 200;
    StartWorker(settings);
    Enqueue(L"Artist", L"Album", L"First", 200, true);
    // The refused handshake leaves the play queued; the next pass sends it.
    EXPECT_TRUE(WaitFor([] { return RecordedPlays().size() == 1; }, 5000));
    EXPECT_EQ(JournalCount("handshake"), 2u);
    EXPECT_TRUE(StatusLogHas(L"Wait status 258"));
}

TEST_F(WorkerTest, ShutdownMovesIncomingPlaysIntoTheSavedQueue)
{
    StartWorker(TesterSettings());
    ASSERT_TRUE(WaitFor([this] { return IsWaiting(); }, 5000));
    {
        // The worker wakes for the shutdown and waits for the lock; the play
        // arrives in the incoming list meanwhile.
        CLock lock(QueueLock());
        SetEvent(EventShutdown());
        Enqueue(L"Artist", L"Album", L"Late", 200, true);
    }
    ASSERT_TRUE(StopWorker());
    EXPECT_TRUE(StatusLogHas(L"Wait status 0"));
    EXPECT_TRUE(StatusLogHas(L"Added 1 entries to queue"));
    EXPECT_TRUE(StatusLogHas(L"Told to exit"));
    EXPECT_EQ(QueueFileNames(), std::vector<std::wstring>{L"Late"});
    EXPECT_EQ(JournalCount("handshake"), 0u);
}

TEST_F(WorkerTest, ShutdownDuringAnIntervalPauseKeepsTheWholeQueue)
{
    Script(L"submit=interval:60");
    QueueThreePlays();
    StartWorker(TesterSettings());
    ASSERT_TRUE(WaitFor([this] { return StatusLogHas(L"Sleeping 60 seconds"); }, 10000));
    ASSERT_TRUE(StopWorker());
    EXPECT_TRUE(StatusLogHas(L"Shutdown signal received!"));
    ASSERT_EQ(RecordedPlays().size(), 1u) << "the service took the first play";
    EXPECT_NE(RecordedPlays()[0].find("\"track\":\"One\""), std::string::npos);
    EXPECT_EQ(JournalCount("submit"), 1u);
    EXPECT_TRUE(Outcomes().empty());
    // The accepted play is sent again later: counted twice beats lost.
    EXPECT_EQ(SubmissionQueueCount(), 3u);
    EXPECT_EQ(QueueFileNames(), (std::vector<std::wstring>{L"One", L"Two", L"Three"}));
}

TEST_F(WorkerTest, ShutdownWhileTheServerHangsEndsTheWorkerInTime)
{
    // The handshake's service answers after 8 seconds, longer than the stop
    // may take; the post's never answers.
    for (const std::string kind : {"handshake", "submit"})
    {
        SCOPED_TRACE(kind);
        ASSERT_TRUE(ControlStandin(L"reset"));
        Script(Utf8ToWide(kind) + (kind == "handshake" ? L"=delay:8" : L"=hang"));
        Enqueue(L"Artist", L"Album", L"Stuck", 200, true);
        CSubmissionSettings settings = TesterSettings();
        settings.connectTimeoutMs = 3000;
        StartWorker(settings);
        ASSERT_TRUE(WaitFor([&kind] { return JournalCount(kind) == 1; }, 10000));
        Sleep(200); // the request is in the service's hands now
        EXPECT_TRUE(StopWorker()) << "ended within 5 seconds";
        EXPECT_EQ(QueueFileNames(), std::vector<std::wstring>{L"Stuck"});
        // The thread that waits for the service was given up on, not killed:
        // the answer or WinINet's time-outs end it.
        const long lived = WaitForNoLiveThreads(30000);
        EXPECT_GE(lived, 0);
        std::cout << "[ measured ] after a stop during a slow " << kind
                  << " (time-outs 3000 ms) the last thread lived " << lived << " ms more\n";
        ClearTrackLists();
    }
}

namespace
{

// Stands for a worker that outlived its stop: it runs until the test lets
// it go.
class CFakePredecessor
{
public:
    CFakePredecessor()
        : m_release(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
          m_thread(CreateThread(nullptr, 0, &Wait, m_release.Get(), 0, nullptr))
    {
    }
    ~CFakePredecessor() { Release(); }
    HANDLE Thread() const { return m_thread.Get(); }
    void Release()
    {
        SetEvent(m_release.Get());
        WaitForSingleObject(m_thread.Get(), 10000);
    }

private:
    static DWORD WINAPI Wait(void* release)
    {
        WaitForSingleObject(static_cast<HANDLE>(release), INFINITE);
        return 0;
    }
    CHandle m_release;
    CHandle m_thread;
};

} // namespace

TEST_F(WorkerTest, TakesOverTheQueueOnlyAfterItsPredecessorEnded)
{
    QueueThreePlays();
    ASSERT_TRUE(SaveQueue());
    ClearTrackLists(); // the queue in memory belongs to the predecessor
    CFakePredecessor predecessor;
    StartWorker(TesterSettings(), predecessor.Thread());
    ASSERT_TRUE(WaitFor(
        [this] { return StatusLogHas(L"Waiting for the previous AS thread to end"); }, 5000));
    Enqueue(L"Artist", L"Album", L"Four", 204, true);
    // Blocked on its predecessor, the worker has neither read nor written
    // the queue, nor called the service.
    EXPECT_EQ(QueueFileNames(), (std::vector<std::wstring>{L"One", L"Two", L"Three"}));
    EXPECT_EQ(IncomingCount(), 1u);
    EXPECT_EQ(JournalCount("handshake"), 0u);

    predecessor.Release();
    // The saved plays, then the new one; each once.
    ASSERT_TRUE(WaitFor([] { return RecordedPlays().size() == 4; }, 10000));
    EXPECT_NE(RecordedPlays()[0].find("\"track\":\"One\""), std::string::npos);
    ASSERT_TRUE(WaitFor([this] { return IsWaiting(); }, 5000)) << "the pass is over";
    ASSERT_TRUE(StopWorker());
    EXPECT_EQ(RecordedPlays().size(), 4u);
    EXPECT_TRUE(QueueFileNames().empty());
}

TEST_F(WorkerTest, StoppedBeforeItsPredecessorEndedLeavesTheQueueAlone)
{
    QueueThreePlays();
    ASSERT_TRUE(SaveQueue());
    ClearTrackLists();
    CFakePredecessor predecessor;
    StartWorker(TesterSettings(), predecessor.Thread());
    ASSERT_TRUE(WaitFor(
        [this] { return StatusLogHas(L"Waiting for the previous AS thread to end"); }, 5000));
    ASSERT_TRUE(StopWorker());
    EXPECT_TRUE(StatusLogHas(L"Told to exit"));
    EXPECT_EQ(QueueFileNames(), (std::vector<std::wstring>{L"One", L"Two", L"Three"}))
        << "not saved over by a worker that never had the queue";
}
