// The player's automation object, the poll and the play request against a
// scripted fake player. No status log is open, so status lines come as
// captured information boxes.
#include "common/captured_messages.h"
#include "common/temp_folder.h"
#include "host/automation_call.h"
#include "host/bx_tracks.h"
#include "host/fake_player.h"
#include "host/host_state.h"
#include "host/play_request.h"
#include "host/poll_timer.h"
#include "scrobbler/queue/data_files.h"
#include "scrobbler/queue/engine_state.h"
#include "scrobbler/queue/submission_queue.h"
#include "settings/data_folder.h"
#include "settings/live_settings.h"
#include "support/logs.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>

using namespace cvas;

namespace
{

class Host : public testing::Test
{
protected:
    void SetUp() override
    {
        OverrideSpecialFolders(folder.File(L"Documents"), folder.File(L"AppData"));
        ForgetDataFilePaths();
        CloseLogs();
        ClearTrackLists();
        ASSERT_TRUE(CreateEngineEvents());
        Settings() = CSettingsValues{};
        SetScrobblingEnabledFlag(true);
        SetTerminating(false);
        ResetPlayTracking();
        SetHostAutomation(automation.Get());
        window = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr,
                                 nullptr);
        ASSERT_NE(window, nullptr);
        test::TakeCapturedMessages();
    }
    void TearDown() override
    {
        DestroyWindow(window);
        SetHostAutomation(nullptr);
        SetScrobblingEnabledFlag(false);
        ClearTrackLists();
        CloseEngineEvents();
        OverrideSpecialFolders(L"", L"");
        ForgetDataFilePaths();
        test::TakeCapturedMessages();
        EXPECT_EQ(player.openObjects, 1) << "every object handed out has been released";
        EXPECT_TRUE(player.ArgumentsOf(L"file 28").empty()) << "the further text is never asked";
    }

    // One poll as the timer runs it; true when it set the timer again.
    bool PollAt(int position)
    {
        player.position = position;
        PollProcedure(window, WM_TIMER, kPollTimerId, 0);
        return KillTimer(window, kPollTimerId) != 0;
    }
    // Makes a file current and lets one poll see it.
    void Start(int index)
    {
        player.currentIndex = index;
        PollAt(0);
    }
    std::vector<std::wstring> StatusLines()
    {
        std::vector<std::wstring> lines;
        for (const test::CapturedMessage& message : test::TakeCapturedMessages())
            lines.push_back(message.text);
        return lines;
    }

    test::CTempFolder folder;
    test::CFakePlayer player;
    CComPtr<IDispatch> automation =
        CComPtr<IDispatch>::Adopt(new test::CFakeObject(player, L"automation"));
    HWND window = nullptr;
};

// Runs this thread's messages until done() holds; false when it has not
// within a minute, so that a test never hangs.
template <typename Done> bool RunMessagesUntil(Done done)
{
    const ULONGLONG end = GetTickCount64() + 60000;
    while (!done())
    {
        const ULONGLONG now = GetTickCount64();
        if (now >= end)
            return false;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(end - now), QS_ALLINPUT);
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&message);
    }
    return true;
}

// The text with its one "%d" filled in.
std::wstring WithNumber(std::wstring text, int number)
{
    return text.replace(text.find(L"%d"), 2, std::to_wstring(number));
}

} // namespace

TEST_F(Host, CallsByDispatchId)
{
    // Two arguments reach the member in the order it declares them.
    EXPECT_EQ(Call(automation.Get(), 32, CallKind::Method, {IntArgument(4242), IntArgument(1)}),
              S_OK);
    EXPECT_EQ(player.ArgumentsOf(L"automation 32"), std::vector<std::wstring>{L"4242 1"});
    CComPtr<IDispatch> object;
    player.failing = L"automation 3";
    EXPECT_EQ(CallForObject(automation.Get(), 3, CallKind::Method, object), DISP_E_EXCEPTION);
    player.answersNoObject = player.failing;
    player.failing.clear();
    EXPECT_EQ(CallForObject(automation.Get(), 3, CallKind::Method, object), E_POINTER);
    int value = 5;
    EXPECT_EQ(CallForInt(nullptr, 4, CallKind::Method, value), E_POINTER);
    EXPECT_EQ(value, 5);

    EXPECT_EQ(PlayLibraryFile(4711), S_OK);
    EXPECT_EQ(player.ArgumentsOf(L"play list 9"), std::vector<std::wstring>{L"4711"});
    EXPECT_EQ(player.calls.back(), L"play list 4 0");
    player.failing = L"play list 9";
    EXPECT_EQ(PlayLibraryFile(12), DISP_E_EXCEPTION);
    EXPECT_EQ(player.ArgumentsOf(L"play list 4").size(), 1u) << "nothing plays after a failure";
}

TEST_F(Host, SnapshotAroundTheCurrentFile)
{
    player.playlist = {{L"a", 1, 1}, {L"b", 2, 2}, {L"c", 3, 3}};
    const std::pair<int, std::wstring> cases[] = {{0, L"-CN 1/3 name of a"},
                                                  {1, L"PCN 2/3 name of b"},
                                                  {2, L"PC- 3/3 name of c"},
                                                  {3, L"--- 0/0 "},
                                                  {-1, L"--- 0/0 "}};
    for (const auto& [index, expected] : cases)
    {
        player.currentIndex = index;
        const CountedHandle<CBXTracks> tracks = MakeTracks(automation.Get());
        const CBXTracks& t = *tracks;
        EXPECT_EQ(std::wstring(t.Previous ? L"P" : L"-") + (t.Current ? L"C" : L"-") +
                      (t.Next ? L"N " : L"- ") + std::to_wstring(t.Position) + L"/" +
                      std::to_wstring(t.Count) + L" " + t.FileName + t.DisplayName + t.Extension +
                      t.FurtherText,
                  expected);
    }
}

TEST_F(Host, QualifiesAtHalfItsLengthOrAtTheHighWaterMark)
{
    player.playlist = {{L"short", 29, 1}};
    Start(0);
    for (int position : {0, 15, 28, 100})
        PollAt(position);
    EXPECT_EQ(StatusLines(),
              std::vector<std::wstring>{L"Ignoring  as it's duration is 29 seconds."});

    struct Case
    {
        int duration, highWaterMark, qualifiesAt;
    } const cases[] = {{30, 240, 15},    {31, 240, 15},    {300, 240, 150},
                       {1200, 240, 240}, {1200, 100, 100}, {-1, 240, 240}}; // -1: length unknown
    for (const Case& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.duration << " s, high-water mark " << c.highWaterMark);
        const int key = static_cast<int>(player.playlist.size());
        player.playlist.push_back({L"file" + std::to_wstring(key), c.duration, key});
        Settings().HighWaterMark = c.highWaterMark;
        Start(key);
        PollAt(c.qualifiesAt - 1);
        EXPECT_EQ(IncomingCount(), static_cast<std::size_t>(key - 1));
        PollAt(c.qualifiesAt);
        EXPECT_EQ(IncomingCount(), static_cast<std::size_t>(key));
        EXPECT_EQ(StatusLines(), std::vector<std::wstring>{
                                     WithNumber(L"Issuing the following filter: ~d=a [key]=[%d] " +
                                                    std::wstring(kDefaultFilter),
                                                key)});
    }
}

TEST_F(Host, OnePlayPerChangeOfFile)
{
    player.playlist = {{L"C:\\Music\\Song.mp3", 200, 1},
                       {L"c:\\MUSIC\\song.MP3", 200, 2},
                       {L"C:\\Music\\Other.mp3", 200, 3}};
    Start(0);
    // Played to the end, again from the start, then under other letter case.
    for (int position : {100, 0, 150})
        PollAt(position);
    Start(1);
    PollAt(150);
    EXPECT_EQ(IncomingCount(), 1u);
    Start(2);
    PollAt(100);
    EXPECT_EQ(IncomingCount(), 2u);
}

TEST_F(Host, NothingQueuedWhilePausedDisabledOrTerminating)
{
    player.playlist = {{L"a", 300, 1}};
    player.state = 1;
    Start(0);
    PollAt(1000);
    SetScrobblingEnabledFlag(false);
    player.state = 2;
    PollAt(200);
    SetTerminating(true);
    player.calls.clear();
    EXPECT_FALSE(PollAt(200)) << "the timer is not set again";
    EXPECT_TRUE(player.calls.empty());
    EXPECT_EQ(IncomingCount(), 0u);

    SetTerminating(false);
    SetScrobblingEnabledFlag(true);
    EXPECT_TRUE(PollAt(200));
    EXPECT_EQ(IncomingCount(), 1u);
    EXPECT_TRUE(StartPollTimer(window));
    EXPECT_TRUE(KillTimer(window, kPollTimerId));
}

TEST_F(Host, FilterMatchingOtherThanOneFileIsNotQueued)
{
    Settings().Filter = L"Genre=[Rock]\r\nYear=[1999]\nRating=[5]\r";
    player.playlist = {{L"a", 100, 0}, {L"b", 100, 2}};
    for (int matches : {0, 2})
    {
        player.matches = matches;
        Start(matches / 2);
        PollAt(50);
        PollAt(60);
    }
    const std::wstring query = L"~d=a [key]=[%d] Genre=[Rock]  Year=[1999] Rating=[5] ";
    const std::wstring refused = L"File did not qualify (%d) therefore it's not being submitted!";
    EXPECT_EQ(player.ArgumentsOf(L"automation 2"),
              (std::vector<std::wstring>{WithNumber(query, 0), WithNumber(query, 2)}));
    EXPECT_EQ(StatusLines(),
              (std::vector<std::wstring>{L"Issuing the following filter: " + WithNumber(query, 0),
                                         WithNumber(refused, 0),
                                         L"Issuing the following filter: " + WithNumber(query, 2),
                                         WithNumber(refused, 2)}));
    EXPECT_EQ(IncomingCount(), 0u);
}

TEST_F(Host, QueuedPlayTakesItsFieldsThroughTheTemplates)
{
    Settings().Artist = L"[ARTIST] & [ALBUM ARTIST]";
    player.playlist = {{L"track", 301, 5}};
    Start(0);
    PollAt(151);
    EXPECT_EQ(WaitForSingleObject(EventData(), 0), WAIT_OBJECT_0);
    EXPECT_EQ(player.ArgumentsOf(L"file 38"),
              (std::vector<std::wstring>{L"[ARTIST] & [ALBUM ARTIST]", L"[ALBUM]", L"[NAME]"}));
    ASSERT_TRUE(MoveIncomingToQueue());
    const CTrackRecord& record = *SubmissionQueue().front();
    EXPECT_EQ(record.Artist() + record.Album() + record.Name() + record.Duration(),
              L"<track [ARTIST] & [ALBUM ARTIST]><track [ALBUM]><track [NAME]>301");
}

TEST_F(Host, FailuresOfThePlayer)
{
    const std::wstring lostTrack = L"Crash while trying to get the currently playing now track!a ";
    struct Case
    {
        const wchar_t* member;
        bool noObject;
        std::wstring fatal; // empty: the poll goes on
    } const cases[] = {
        {L"automation 3", false, L"Crash while trying to get the current playlist object!"},
        {L"automation 1", false, L"Crash while trying to get the playback object!"},
        {L"automation 1", true, L"Crash while trying to get the playback object!"},
        {L"playlist 1", false, lostTrack + L"0 3"},
        {L"playlist 5", false, lostTrack + L"1 3"},
        {L"playlist 5", true, lostTrack + L"1 3"},
        {L"playback 1", false, L""},
        {L"file 1", false, L""},
    };
    player.playlist = {{L"a", 100, 1}, {L"b", 100, 2}, {L"c", 100, 3}};
    player.currentIndex = 1;
    for (const Case& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.member << (c.noObject ? " gives no object" : ""));
        (c.noObject ? player.answersNoObject : player.failing) = c.member;
        const bool rearmed = PollAt(0); // nothing is thrown out of the timer's procedure
        EXPECT_EQ(rearmed, c.fatal.empty());
        const std::vector<test::CapturedMessage> boxes = test::TakeCapturedMessages();
        ASSERT_EQ(boxes.size(), c.fatal.empty() ? 0u : 1u);
        if (!c.fatal.empty())
        {
            EXPECT_TRUE(boxes[0].text == c.fatal && boxes[0].style == MB_ICONERROR);
        }
        player.failing.clear();
        player.answersNoObject.clear();
    }

    // A failure while a play is judged judges it all the same, once.
    player.failing = L"file 38";
    PollAt(0);
    PollAt(50);
    PollAt(60);
    EXPECT_EQ(StatusLines().back(), L"The player did not answer about the current file "
                                    L"(0x80020009); it is not being submitted.");
    EXPECT_EQ(player.ArgumentsOf(L"file 38").size(), 1u);
    EXPECT_EQ(IncomingCount(), 0u);
}

// The poll as the system runs it: a real timer, fired through this thread's
// message loop.
TEST_F(Host, TimerRunsOnAfterAnyFailureButTheLossOfThePlayer)
{
    Settings().PollTimeout = 10;
    player.playlist = {{L"a", 100, 1}};
    // Memory running out is not the loss of the player: the poll ends, the
    // timer runs on, and nothing is shown.
    player.outOfMemory = L"playlist 1";
    ASSERT_TRUE(StartPollTimer(window));
    ASSERT_TRUE(RunMessagesUntil([&] {
        return std::count(player.calls.begin(), player.calls.end(), L"playlist 1") >= 2;
    })) << "the timer fired again after a poll that threw";
    EXPECT_TRUE(test::TakeCapturedMessages().empty());

    player.outOfMemory.clear();
    player.failing = L"automation 1"; // the playback object
    std::vector<test::CapturedMessage> boxes;
    ASSERT_TRUE(RunMessagesUntil([&] {
        for (test::CapturedMessage& box : test::TakeCapturedMessages())
            boxes.push_back(std::move(box));
        return !boxes.empty();
    }));
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text, L"Crash while trying to get the playback object!");
    EXPECT_EQ(boxes[0].style, static_cast<unsigned>(MB_ICONERROR));
    EXPECT_FALSE(KillTimer(window, kPollTimerId)) << "the timer is not set again";
}

TEST_F(Host, ManyPollsLeaveNoReferenceBehind)
{
    player.playlist = {{L"a", 40, 1}, {L"b", 20, 2}, {L"c", -1, 3}, {L"d", 600, 4}};
    for (int i = 0; i < 400; ++i)
    {
        player.currentIndex = (i / 25) % 5; // 4: past the end, no current file
        player.state = i % 7 == 0 ? 1 : 2;
        player.matches = (i / 100) % 3;
        PollAt(i % 25 * 12);
    }
    EXPECT_GT(IncomingCount(), 0u);
}
