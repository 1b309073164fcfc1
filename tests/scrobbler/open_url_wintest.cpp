#include "scrobbler/network_fixture.h"

#include "scrobbler/engine_state.h"
#include "scrobbler/error_text.h"
#include "scrobbler/open_url.h"
#include "scrobbler/standin_client.h"
#include "support/text_encoding.h"

#include <windows.h>

#include <algorithm>
#include <iostream>
#include <thread>

using namespace cvas;
using namespace cvas::test;

namespace
{

using TransportTest = NetworkTest;

// The status log holds these lines, one after the other.
::testing::AssertionResult HasLines(const std::vector<std::wstring>& texts,
                                    const std::vector<std::wstring>& lines)
{
    auto at = std::search(texts.begin(), texts.end(), lines.begin(), lines.end());
    if (at != texts.end())
        return ::testing::AssertionSuccess();
    auto failure = ::testing::AssertionFailure() << "status log:";
    for (const std::wstring& text : texts)
        failure << "\n  " << WideToUtf8(text);
    return failure;
}

} // namespace

TEST_F(TransportTest, ConnectedReadsTheWholeAnswerAndReportsNothing)
{
    std::unique_ptr<COpenURL> transport;
    ASSERT_TRUE(COpenURL::Open(L"agent", StandinHandshakeUrl(), 10000, EventShutdown(), transport));
    EXPECT_EQ(transport->Status(), COpenURL::kConnected);
    const std::wstring answer = transport->ReadAll();
    EXPECT_EQ(answer.substr(0, 9), L"UPTODATE\n");
    EXPECT_NE(answer.find(StandinBase() + L"/protocol_1.1"), std::wstring::npos);
    const auto before = StatusTexts().size();
    transport->ReportFailure();
    EXPECT_EQ(StatusTexts().size(), before);

    // A second open drops the first transport; reading a huge answer ends.
    Script(L"handshake=huge");
    ASSERT_TRUE(COpenURL::Open(L"agent", StandinHandshakeUrl(), 10000, EventShutdown(), transport));
    EXPECT_EQ(transport->ReadAll().size(), 1000000u);
}

TEST_F(TransportTest, RefusedConnectionReportsTheErrorAndItsText)
{
    const std::wstring url = L"http://127.0.0.1:1/?hs=true";
    std::unique_ptr<COpenURL> transport;
    EXPECT_FALSE(COpenURL::Open(L"agent", url, 10000, EventShutdown(), transport));
    EXPECT_EQ(transport->Status(), COpenURL::kConnectFailed);
    EXPECT_EQ(transport->Error(), 12029u);
    transport->ReportFailure();
    EXPECT_TRUE(
        HasLines(StatusTexts(), {L"Got error 12029 while trying to connect to:", L"\t" + url,
                                 L"\tCannot connect to the specified address/port."}));
}

// A connect thread given up on is left to end by itself: here the service
// answers after two seconds, long after the wait gave up, and the thread then
// finds its handles closed and closes the request it got.
TEST_F(TransportTest, SlowServerTimesOutAndTheGivenUpThreadEndsByItself)
{
    Script(L"handshake=delay:2");
    std::unique_ptr<COpenURL> transport;
    EXPECT_FALSE(COpenURL::Open(L"agent", StandinHandshakeUrl(), 500, EventShutdown(), transport));
    EXPECT_EQ(transport->Status(), COpenURL::kTimedOut);
    EXPECT_EQ(transport->Session(), nullptr) << "the waiting side closed the handles";
    transport->ReportFailure();
    EXPECT_TRUE(HasLines(
        StatusTexts(), {L"Timed out while trying to connect to:", L"\t" + StandinHandshakeUrl()}));
    const long lived = WaitForNoLiveThreads(30000);
    EXPECT_GE(lived, 0);
    std::cout << "[ measured ] a connect thread given up on after 500 ms (service answers at "
                 "2 s) lived "
              << lived << " ms more\n";

    // The next open on a fresh transport works as before.
    ASSERT_TRUE(COpenURL::Open(L"agent", StandinHandshakeUrl(), 10000, EventShutdown(), transport));
}

TEST_F(TransportTest, ShutdownDuringASlowConnectEndsTheWait)
{
    Script(L"handshake=delay:2");
    std::thread stopper([] {
        Sleep(300);
        SetEvent(EventShutdown());
    });
    std::unique_ptr<COpenURL> transport;
    // Only the shutdown can end this wait as status 4; a time-out reads 2.
    const bool opened =
        COpenURL::Open(L"agent", StandinHandshakeUrl(), 30000, EventShutdown(), transport);
    stopper.join();
    EXPECT_FALSE(opened);
    EXPECT_EQ(transport->Status(), COpenURL::kShutdownRequested);
    transport->ReportFailure();
    EXPECT_TRUE(HasLines(StatusTexts(), {L"Shutdown requested while trying to connect to:",
                                         L"\t" + StandinHandshakeUrl()}));
    EXPECT_GE(WaitForNoLiveThreads(30000), 0);
}

TEST(ErrorText, SystemTextsLoseTheirLineBreakAndWinInetCodesUseTheTable)
{
    EXPECT_EQ(ErrorText(12029), L"Cannot connect to the specified address/port.");
    EXPECT_EQ(ErrorText(12003), L"");
    const std::wstring system = ErrorText(ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(system.empty());
    EXPECT_NE(system.back(), L'\n');
    EXPECT_EQ(system.find(L"Could not find"), std::wstring::npos);
}
