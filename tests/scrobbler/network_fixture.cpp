#include "scrobbler/network_fixture.h"

#include "common/log_texts.h"
#include "scrobbler/network/session_keys.h"
#include "scrobbler/queue/data_files.h"
#include "scrobbler/queue/engine_state.h"
#include "scrobbler/queue/queue_file.h"
#include "scrobbler/queue/submission_queue.h"
#include "scrobbler/standin_client.h"
#include "settings/data_folder.h"
#include "settings/ini_file.h"
#include "settings/log_settings.h"
#include "support/logs.h"
#include "support/module_thread.h"
#include "support/text_encoding.h"

#include <windows.h>

#include <algorithm>

namespace cvas::test
{
namespace
{

// Three WinINet time-outs of the longest connect time-out the tests use, and
// room for a busy machine.
constexpr unsigned kThreadEndLimitMs = 3 * 10000 + 30000;

} // namespace

void NetworkTest::SetUp()
{
    ASSERT_FALSE(StandinBase().empty()) << "run through run_with_standin.sh";
    ASSERT_TRUE(ControlStandin(L"reset"));
    OverrideSpecialFolders(root.Path() + L"Documents", root.Path() + L"AppData");
    ForgetDataFilePaths();
    WriteFileBytes(root.File(L"test.ini"), "[General]\r\nStatusLogLevel=1\r\n");
    OpenLogs(CIni(root.File(L"test.ini")));
    ASSERT_TRUE(CreateEngineEvents());
    ClearTrackLists();
}

void NetworkTest::TearDown()
{
    // A thread given up on ends within WinINet's time-outs (at most the
    // settings' connect time-out for each of connect, send and receive); no
    // test may leave one behind for the next.
    EXPECT_GE(WaitForNoLiveThreads(kThreadEndLimitMs), 0) << "a module thread outlived its test";
    ClearTrackLists();
    CloseEngineEvents();
    CloseLogs();
    SetStatusLogLevel(1);
    OverrideSpecialFolders(L"", L"");
    ForgetDataFilePaths();
}

CSubmissionSettings NetworkTest::TesterSettings(bool reattemptFailed) const
{
    CSubmissionSettings settings;
    settings.agentName = L"Microsoft Internet Explorer";
    settings.handshakeUrl = StandinHandshakeUrl();
    settings.userName = L"tester";
    settings.passwordDigest = PasswordDigest("secret");
    settings.reattemptFailed = reattemptFailed;
    settings.connectTimeoutMs = 10000;
    return settings;
}

void NetworkTest::Script(const std::wstring& actions)
{
    ASSERT_TRUE(ControlStandin(L"script?" + actions)) << actions;
}

void NetworkTest::QueueThreePlays()
{
    Enqueue(L"Artist", L"Album", L"One", 201, true);
    Enqueue(L"Artist", L"Album", L"Two", 202, true);
    Enqueue(L"Artist", L"Album", L"Three", 203, true);
    ASSERT_TRUE(MoveIncomingToQueue());
    ASSERT_EQ(SubmissionQueueCount(), 3u);
}

std::vector<std::wstring> NetworkTest::StatusTexts() const
{
    return LogTexts(StatusLogFile());
}

std::vector<std::wstring> NetworkTest::FailedTexts() const
{
    return LogTexts(FailedLogFile());
}

bool NetworkTest::StatusLogHas(const std::wstring& text) const
{
    const std::vector<std::wstring> texts = StatusTexts();
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

std::vector<std::wstring> NetworkTest::QueueFileNames() const
{
    TrackList queue;
    LoadQueueFile(QueueFilePath(), CReplacementTable(), queue);
    std::vector<std::wstring> names;
    for (const auto& record : queue)
        names.push_back(record->Name());
    return names;
}

std::vector<CReportedOutcome> NetworkTest::Outcomes() const
{
    std::lock_guard<std::mutex> lock(m_outcomesMutex);
    return m_outcomes;
}

SubmissionReport NetworkTest::Reporter()
{
    return [this](bool succeeded, const CTrackRecord& record, const std::wstring& status) {
        std::lock_guard<std::mutex> lock(m_outcomesMutex);
        m_outcomes.push_back({succeeded, record.Name(), status});
    };
}

long NetworkTest::WaitForNoLiveThreads(unsigned limitMs)
{
    const ULONGLONG started = GetTickCount64();
    if (!WaitFor([] { return LiveModuleThreads() == 0; }, limitMs))
        return -1;
    return static_cast<long>(GetTickCount64() - started);
}

bool NetworkTest::WaitFor(const std::function<bool()>& condition, unsigned limitMs)
{
    const ULONGLONG deadline = GetTickCount64() + limitMs;
    while (!condition())
    {
        if (GetTickCount64() >= deadline)
            return condition();
        Sleep(20);
    }
    return true;
}

} // namespace cvas::test
