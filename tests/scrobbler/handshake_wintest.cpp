#include "scrobbler/network_fixture.h"

#include "scrobbler/network/handshake.h"
#include "scrobbler/queue/engine_state.h"
#include "scrobbler/queue/submission_queue.h"
#include "scrobbler/standin_client.h"
#include "scrobbler/worker/submission_pass.h"
#include "support/text_encoding.h"

#include <windows.h>

#include <thread>

using namespace cvas;
using namespace cvas::test;

namespace
{

using HandshakeTest = NetworkTest;

} // namespace

TEST_F(HandshakeTest, FourLinesGiveASessionAndTheAskedPauseBeforeTheFirstPost)
{
    Script(L"handshake=interval:1");
    QueueThreePlays();
    RunSubmissionPass(TesterSettings(), EventShutdown(), Reporter());
    EXPECT_TRUE(StatusLogHas(L"  Response: UPTODATE"));
    EXPECT_TRUE(StatusLogHas(L"  Response: INTERVAL 1"));
    EXPECT_TRUE(StatusLogHas(L"Sleeping 1 seconds"));
    ASSERT_EQ(RecordedPlays().size(), 3u) << "the session response matched the challenge";
    EXPECT_NE(RecordedPlays()[0].find("\"track\":\"One\""), std::string::npos);
    EXPECT_TRUE(QueueFileNames().empty());
}

TEST_F(HandshakeTest, CarriageReturnsAndBlankLinesBetweenLinesAreIgnored)
{
    Script(L"handshake=crlf");
    QueueThreePlays();
    RunSubmissionPass(TesterSettings(), EventShutdown(), Reporter());
    EXPECT_EQ(RecordedPlays().size(), 3u);
    // An empty line would read back as its trimmed prefix.
    EXPECT_TRUE(StatusLogHas(L"  Response: UPTODATE"));
    EXPECT_FALSE(StatusLogHas(L"  Response:"));
}

TEST_F(HandshakeTest, AnswersThatOpenNoSessionSubmitNothingAndKeepTheQueue)
{
    for (const wchar_t* action : {L"two-lines", L"update:http%3A//127.0.0.1/new", L"baduser",
                                  L"failed:Maintenance", L"binary", L"huge"})
    {
        SCOPED_TRACE(WideToUtf8(action));
        ASSERT_TRUE(ControlStandin(L"reset"));
        ClearTrackLists();
        Script(std::wstring(L"handshake=") + action);
        QueueThreePlays();
        RunSubmissionPass(TesterSettings(), EventShutdown(), Reporter());
        EXPECT_EQ(JournalCount("handshake"), 1u);
        EXPECT_EQ(JournalCount("submit"), 0u);
        EXPECT_EQ(SubmissionQueueCount(), 3u);
    }
    EXPECT_TRUE(Outcomes().empty());
    EXPECT_TRUE(StatusLogHas(L"  Response: UPDATE http://127.0.0.1/new"));
    EXPECT_TRUE(StatusLogHas(L"  Response: FAILED Maintenance"));
}

TEST_F(HandshakeTest, DroppedConnectionOpensNoSessionAndKeepsTheQueue)
{
    // WinINet sends a request again when a connection is dropped, as many
    // times as its own timing makes it; every attempt of this pass meets a
    // drop. Whether the platform then reports a failed connect or an empty
    // answer, no session opens.
    std::wstring drops = L"handshake=drop";
    for (int attempt = 1; attempt < 10; ++attempt)
        drops += L"&handshake=drop";
    Script(drops);
    QueueThreePlays();
    RunSubmissionPass(TesterSettings(), EventShutdown(), Reporter());
    EXPECT_EQ(JournalCount("submit"), 0u);
    EXPECT_EQ(SubmissionQueueCount(), 3u);
    EXPECT_TRUE(Outcomes().empty());
}

TEST_F(HandshakeTest, SubmissionUrlWithoutAHostFailsEveryPostAtTheConnectStepAndKeepsThePlays)
{
    Script(L"handshake=raw:UPTODATE%5Cnc%5Cnhttp:///protocol_1.1%5Cn");
    QueueThreePlays();
    // Plays the service never saw are kept, whatever ReattemptFailed says.
    RunSubmissionPass(TesterSettings(false), EventShutdown(), Reporter());
    EXPECT_EQ(JournalCount("submit"), 0u);
    EXPECT_TRUE(StatusLogHas(L"Failed to connect to : Invalid parameter."));
    const auto outcomes = Outcomes();
    ASSERT_EQ(outcomes.size(), 3u);
    for (const CReportedOutcome& outcome : outcomes)
    {
        EXPECT_FALSE(outcome.succeeded);
        EXPECT_EQ(outcome.status, L"Failed to connect to Invalid parameter.");
    }
    EXPECT_EQ(QueueFileNames(), (std::vector<std::wstring>{L"One", L"Two", L"Three"}));
    EXPECT_TRUE(FailedTexts().empty());
}

TEST_F(HandshakeTest, SubmissionUrlWithALeadingSlashIsMalformed)
{
    Script(L"handshake=leading-slash");
    QueueThreePlays();
    RunSubmissionPass(TesterSettings(), EventShutdown(), Reporter());
    EXPECT_TRUE(StatusLogHas(L"Malformed submission url: '/protocol_1.1'"));
    EXPECT_EQ(JournalCount("submit"), 0u);
    EXPECT_EQ(SubmissionQueueCount(), 3u);
}

TEST_F(HandshakeTest, ShutdownDuringTheHandshakePauseEndsThePass)
{
    Script(L"handshake=interval:60");
    std::thread stopper([this] {
        WaitFor([this] { return StatusLogHas(L"Sleeping 60 seconds"); }, 10000);
        SetEvent(EventShutdown());
    });
    std::unique_ptr<COpenURL> transport;
    std::vector<std::string> lines;
    const HandshakeResult result = Handshake(TesterSettings(), EventShutdown(), transport, lines);
    stopper.join();
    EXPECT_EQ(result, HandshakeResult::Shutdown);
    EXPECT_EQ(transport, nullptr) << "the transport is dropped";
    EXPECT_TRUE(StatusLogHas(L"Shutdown signal received!"));
}

TEST_F(HandshakeTest, AnswerWhoseBodyNeverComesIsAFailedConnect)
{
    Script(L"handshake=stall:3");
    QueueThreePlays();
    CSubmissionSettings settings = TesterSettings();
    settings.connectTimeoutMs = 700;
    RunSubmissionPass(settings, EventShutdown(), Reporter());
    const auto texts = StatusTexts();
    ASSERT_GE(texts.size(), 3u);
    // Newest first: the pass's verdict above the time-out and its URL.
    EXPECT_EQ(
        std::vector<std::wstring>(texts.begin(), texts.begin() + 3),
        (std::vector<std::wstring>{L"Failed to connect!", L"Timed out while reading the answer of:",
                                   L"\t" + settings.handshakeUrl}));
    EXPECT_EQ(JournalCount("submit"), 0u);
    EXPECT_EQ(SubmissionQueueCount(), 3u);
}

TEST_F(HandshakeTest, NoConnectionIsLoggedAndKeepsTheQueue)
{
    CSubmissionSettings settings = TesterSettings();
    settings.handshakeUrl = L"http://127.0.0.1:1/?hs=true&p=1.1&c=tst&v=1.0&u=tester";
    QueueThreePlays();
    RunSubmissionPass(settings, EventShutdown(), Reporter());
    EXPECT_TRUE(StatusLogHas(L"Got error 12029 while trying to connect to:"));
    EXPECT_TRUE(StatusLogHas(L"Failed to connect!"));
    EXPECT_EQ(SubmissionQueueCount(), 3u);
}
