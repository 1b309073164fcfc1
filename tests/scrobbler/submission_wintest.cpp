#include "scrobbler/network_fixture.h"

#include "scrobbler/network/submission_settings.h"
#include "scrobbler/queue/engine_state.h"
#include "scrobbler/queue/submission_queue.h"
#include "scrobbler/standin_client.h"
#include "scrobbler/worker/submission_pass.h"
#include "settings/data_folder.h"
#include "settings/settings_values.h"
#include "support/logs.h"
#include "support/text_encoding.h"

#include <windows.h>

#include <algorithm>
#include <regex>

using namespace cvas;
using namespace cvas::test;

namespace
{

using SubmissionTest = NetworkTest;

bool Recorded(const std::string& track)
{
    for (const std::string& play : RecordedPlays())
        if (play.find("\"track\":\"" + track + "\"") != std::string::npos)
            return true;
    return false;
}

} // namespace

TEST_F(SubmissionTest, MiddlePlayRefusedWithoutReattemptEndsThePassEmpty)
{
    Script(L"submit=ok&submit=failed:Track%20rejected&submit=ok");
    QueueThreePlays();
    RunSubmissionPass(TesterSettings(false), EventShutdown(), Reporter());

    EXPECT_TRUE(Recorded("One"));
    EXPECT_TRUE(Recorded("Three"));
    EXPECT_EQ(JournalCount("submit"), 3u);
    EXPECT_TRUE(QueueFileNames().empty());
    EXPECT_EQ(SubmissionQueueCount(), 0u);

    // The body (entry 2) stands above the answer (entry 1).
    const auto failed = FailedTexts();
    ASSERT_EQ(failed.size(), 2u);
    EXPECT_EQ(failed[1], L"FAILED Track rejected");
    EXPECT_EQ(failed[0].rfind(L" ... u=tester&s=", 0), 0u) << WideToUtf8(failed[0]);
    EXPECT_NE(failed[0].find(L"&t[0]=Two&"), std::wstring::npos);
    EXPECT_NE(failed[0].find(L"&m[0]=&l[0]=202&i[0]="), std::wstring::npos);

    const auto outcomes = Outcomes();
    ASSERT_EQ(outcomes.size(), 3u);
    EXPECT_TRUE(outcomes[0].succeeded);
    EXPECT_EQ(outcomes[0].status, L"OK");
    EXPECT_FALSE(outcomes[1].succeeded);
    EXPECT_EQ(outcomes[1].status, L"FAILED Track rejected");
    EXPECT_TRUE(outcomes[2].succeeded);
}

TEST_F(SubmissionTest, MiddlePlayRefusedWithReattemptStaysAlone)
{
    Script(L"submit=ok&submit=failed:Track%20rejected&submit=ok");
    QueueThreePlays();
    RunSubmissionPass(TesterSettings(true), EventShutdown(), Reporter());
    EXPECT_EQ(QueueFileNames(), std::vector<std::wstring>{L"Two"});
    EXPECT_TRUE(StatusLogHas(L"Saving queue to " + DataFolder() + L"Queue.xml ... 1 entries"));
}

TEST_F(SubmissionTest, BadauthDoesNotEndThePass)
{
    CSubmissionSettings settings = TesterSettings(true);
    settings.passwordDigest = "00000000000000000000000000000000"; // a wrong password
    QueueThreePlays();
    RunSubmissionPass(settings, EventShutdown(), Reporter());
    EXPECT_EQ(JournalCount("handshake"), 1u) << "no new handshake";
    EXPECT_EQ(JournalCount("submit"), 3u) << "every play was still posted";
    EXPECT_TRUE(RecordedPlays().empty());
    EXPECT_EQ(FailedTexts().size(), 6u);
    EXPECT_EQ(QueueFileNames(), (std::vector<std::wstring>{L"One", L"Two", L"Three"}));
    for (const CReportedOutcome& outcome : Outcomes())
        EXPECT_EQ(outcome.status, L"BADAUTH");
}

// A newer server answers a wrong password at the post, with BADSESSION: each
// play is in the failed log, and dropped unless ReattemptFailed keeps it.
TEST_F(SubmissionTest, BadsessionIsWrittenToTheFailedLogLikeBadauth)
{
    Script(L"submit=raw:BADSESSION%5Cn&submit=raw:BADSESSION%5Cn&submit=ok");
    QueueThreePlays();
    RunSubmissionPass(TesterSettings(false), EventShutdown(), Reporter());
    const auto failed = FailedTexts();
    ASSERT_EQ(failed.size(), 4u);
    EXPECT_EQ(failed[3], L"BADSESSION");
    EXPECT_NE(failed[2].find(L"&t[0]=One&"), std::wstring::npos) << WideToUtf8(failed[2]);
    EXPECT_EQ(failed[1], L"BADSESSION");
    EXPECT_NE(failed[0].find(L"&t[0]=Two&"), std::wstring::npos) << WideToUtf8(failed[0]);
    const auto outcomes = Outcomes();
    ASSERT_EQ(outcomes.size(), 3u);
    EXPECT_EQ(outcomes[0].status, L"BADSESSION");
    EXPECT_EQ(outcomes[1].status, L"BADSESSION");
    EXPECT_TRUE(outcomes[2].succeeded);
    EXPECT_TRUE(QueueFileNames().empty()) << "refused plays go without ReattemptFailed";
}

TEST_F(SubmissionTest, OnlyAnOkOnTheFirstLineIsSuccess)
{
    Script(L"submit=ok-late&submit=raw:Thanks%5CnOK&submit=crlf");
    QueueThreePlays();
    RunSubmissionPass(TesterSettings(true), EventShutdown(), Reporter());
    const auto outcomes = Outcomes();
    ASSERT_EQ(outcomes.size(), 3u);
    EXPECT_FALSE(outcomes[0].succeeded);
    EXPECT_EQ(outcomes[0].status, L"NOTICE");
    EXPECT_FALSE(outcomes[1].succeeded);
    EXPECT_TRUE(outcomes[2].succeeded);
    EXPECT_TRUE(FailedTexts().empty()) << "neither a FAILED line nor BADAUTH";
    EXPECT_EQ(QueueFileNames(), (std::vector<std::wstring>{L"One", L"Two"}));
}

// None of these answers is in the protocol's words: the service judged
// nothing, so the play is kept even with ReattemptFailed off.
TEST_F(SubmissionTest, HostileAnswersFailThePlayAndLoseNothing)
{
    for (const wchar_t* action :
         {L"drop", L"binary", L"huge", L"raw:",
          L"raw:%3Chtml%3E%3Cbody%3E502%20Bad%20Gateway%3C/body%3E%3C/html%3E"})
    {
        SCOPED_TRACE(WideToUtf8(action));
        ASSERT_TRUE(ControlStandin(L"reset"));
        ClearTrackLists();
        // WinINet sends a dropped request again as often as its own timing
        // makes it: every attempt meets the same answer.
        std::wstring script = std::wstring(L"submit=") + action;
        for (int attempt = 1; attempt < 10; ++attempt)
            script += std::wstring(L"&submit=") + action;
        Script(script);
        Enqueue(L"Artist", L"Album", L"Hostile", 200, true);
        ASSERT_TRUE(MoveIncomingToQueue());
        RunSubmissionPass(TesterSettings(false), EventShutdown(), Reporter());
        EXPECT_GE(JournalCount("submit"), 1u);
        EXPECT_EQ(QueueFileNames(), std::vector<std::wstring>{L"Hostile"});
    }
    EXPECT_TRUE(FailedTexts().empty());
    const auto outcomes = Outcomes();
    EXPECT_EQ(outcomes.size(), 5u);
    for (const CReportedOutcome& outcome : outcomes)
        EXPECT_FALSE(outcome.succeeded) << WideToUtf8(outcome.status);
}

TEST_F(SubmissionTest, UnreachableSubmissionHostFailsAtTheSendStep)
{
    Script(L"handshake=raw:UPTODATE%5Cnc%5Cnhttp://127.0.0.1:1/protocol_1.1%5Cn");
    QueueThreePlays();
    RunSubmissionPass(TesterSettings(false), EventShutdown(), Reporter());
    EXPECT_TRUE(
        StatusLogHas(L"Failed to send the request: Cannot connect to the specified address/port."));
    for (const CReportedOutcome& outcome : Outcomes())
        EXPECT_EQ(outcome.status, L"Failed to send the request");
    EXPECT_EQ(QueueFileNames().size(), 3u);
}

TEST_F(SubmissionTest, PostThatIsNeverAnsweredFailsAfterTheWaitAndThePassGoesOn)
{
    Script(L"submit=hang");
    QueueThreePlays();
    CSubmissionSettings settings = TesterSettings(false);
    settings.connectTimeoutMs = 700;
    RunSubmissionPass(settings, EventShutdown(), Reporter());
    EXPECT_TRUE(StatusLogHas(L"Failed to send the request: Timeout."));
    const auto outcomes = Outcomes();
    ASSERT_EQ(outcomes.size(), 3u);
    EXPECT_EQ(outcomes[0].status, L"Failed to send the request");
    EXPECT_TRUE(outcomes[1].succeeded);
    EXPECT_TRUE(outcomes[2].succeeded);
    EXPECT_EQ(QueueFileNames(), std::vector<std::wstring>{L"One"});
}

TEST_F(SubmissionTest, NonAsciiTextsArriveAsTheyWerePlayed)
{
    Enqueue(L"Bj\u00f6rk & \u5742\u672c", L"A+B = C", L"\u0416\u0438\u0437\u043d\u044c \u20ac", 240,
            true);
    ASSERT_TRUE(MoveIncomingToQueue());
    RunSubmissionPass(TesterSettings(), EventShutdown(), Reporter());
    const auto plays = RecordedPlays();
    ASSERT_EQ(plays.size(), 1u);
    const std::wstring play = Utf8ToWide(plays[0]);
    EXPECT_NE(play.find(L"\"artist\":\"Bj\u00f6rk & \u5742\u672c\""), std::wstring::npos);
    EXPECT_NE(play.find(L"\"album\":\"A+B = C\""), std::wstring::npos);
    EXPECT_NE(play.find(L"\"track\":\"\u0416\u0438\u0437\u043d\u044c \u20ac\""),
              std::wstring::npos);
    EXPECT_NE(play.find(L"\"length\":\"240\""), std::wstring::npos);
}

// The settings as the plug-in makes them: a swapped ClientID and
// ClientVersion shows in the handshake's query, a digest of the wrong bytes
// as a session the service refuses.
TEST_F(SubmissionTest, SettingsMadeFromTheSettingsFileOpenASession)
{
    CSettingsValues values;
    values.Url = StandinBase() + L"/?hs=true&p=1.1";
    values.ClientID = L"cvs";
    values.ClientVersion = L"2.5";
    values.UserName = L"tester";
    values.Password = L"secret";
    values.AgentName = L"Agent of the tests";
    values.ReattemptFailed = true;
    const CSubmissionSettings settings = MakeSubmissionSettings(values);
    EXPECT_EQ(settings.handshakeUrl, values.Url + L"&c=cvs&v=2.5&u=tester");
    EXPECT_TRUE(settings.reattemptFailed);
    EXPECT_EQ(settings.agentName, values.AgentName);

    Enqueue(L"Artist", L"Album", L"Track", 200, true);
    ASSERT_TRUE(MoveIncomingToQueue());
    RunSubmissionPass(settings, EventShutdown(), Reporter());
    ASSERT_EQ(RecordedPlays().size(), 1u) << "the service took the session response";
    const auto journal = Journal();
    ASSERT_FALSE(journal.empty());
    EXPECT_NE(journal[0].find("c=cvs&v=2.5&u=tester"), std::string::npos) << journal[0];
}

// Which engine lines are details: at level 0 only outcomes and errors remain.
TEST_F(SubmissionTest, LevelZeroKeepsOutcomesAndDropsDetails)
{
    SetStatusLogLevel(0);
    Script(L"handshake=raw:UPTODATE%5Cnc%5Cnhttp://127.0.0.1:1/protocol_1.1%5Cn");
    Enqueue(L"Artist", L"Album", L"One", 201, true);
    ASSERT_TRUE(MoveIncomingToQueue());
    RunSubmissionPass(TesterSettings(true), EventShutdown(), Reporter());
    EXPECT_FALSE(StatusLogHas(L"Added 1 entries to queue"));
    EXPECT_TRUE(StatusLogHas(L"  Response: UPTODATE"));
    const auto texts = StatusTexts();
    const auto has = [&texts](const std::wregex& pattern) {
        return std::any_of(texts.begin(), texts.end(), [&pattern](const std::wstring& text) {
            return std::regex_match(text, pattern);
        });
    };
    EXPECT_TRUE(has(std::wregex(
        LR"(Built post reply: 'u=tester&s=[0-9a-f]{32}&a\[0\]=Artist&t\[0\]=One&b\[0\]=Album&m\[0\]=&l\[0\]=201&i\[0\]=\d{4}-\d\d-\d\d%20\d\d:\d\d:\d\d&')")));
    // Nothing listens on the submission URL's port.
    EXPECT_TRUE(has(std::wregex(LR"(Failed to send the request: .*)")));
    EXPECT_TRUE(has(std::wregex(LR"(Saving queue to .*Queue\.xml \.\.\. 1 entries)")));
}
