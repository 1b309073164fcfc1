// The buddy fetch and the two hot-key threads against the stand-in's feeds:
// what is published and when, the progress texts, a failing or stopped
// fetch, the buddy thread from its start to its dialog's end with a play
// request reaching the player, and the recommendation thread that asks the
// player for the track that plays and does nothing anyone can see.
#include "buddies/buddy_fetch.h"
#include "buddies/buddy_thread.h"
#include "common/captured_messages.h"
#include "host/host_state.h"
#include "host/play_request.h"
#include "resources/resource_ids.h"
#include "scrobbler/network_fixture.h"
#include "scrobbler/queue/engine_state.h"
#include "scrobbler/standin_client.h"
#include "settings/live_settings.h"
#include "support/com_ptr.h"
#include "support/module_thread.h"
#include "tools/player/automation_objects.h"
#include "ui/dlg_status.h"
#include "ui/test_window.h"

#include <commctrl.h>
#include <objbase.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <thread>

using namespace cvas;
using namespace cvas::player;
using namespace cvas::test;

namespace
{

// Bounds of the waits for the buddy thread: far beyond what it needs, even
// on a machine that is busy with other work.
constexpr unsigned kThreadStepMs = 60000;

const std::vector<std::wstring> kTesterFriends = {L"alice", L"bob", L"carol", L"dave", L"erin"};

std::vector<std::wstring> NamesOf(const CountedHandle<CBuddyInfo>& list)
{
    std::vector<std::wstring> names;
    if (list)
        for (const auto& buddy : list->buddies)
            names.push_back(buddy->name);
    return names;
}

LRESULT CALLBACK PluginWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == kPlayRequestMessage)
    {
        PlayLibraryFile(static_cast<int>(wParam));
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

// Handles this thread's messages (the player's calls from the buddy thread
// arrive as messages) until the condition holds or limitMs pass.
bool PumpUntil(const std::function<bool()>& condition, unsigned limitMs)
{
    const ULONGLONG end = GetTickCount64() + limitMs;
    while (!condition())
    {
        if (GetTickCount64() >= end)
            return false;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    return true;
}

// Waits until every thread of ours has ended. One that does not end still
// uses the player on the test's stack: nothing is ever killed, so the run
// ends here.
void AwaitThreadsEnd()
{
    if (PumpUntil([] { return LiveModuleThreads() == 0; }, kThreadStepMs))
        return;
    ADD_FAILURE() << "a thread of ours did not end";
    std::fflush(nullptr);
    std::_Exit(1);
}

class BuddyFetch : public NetworkTest
{
protected:
    void SetUp() override
    {
        NetworkTest::SetUp();
        Settings() = CSettingsValues{};
        Settings().UserName = L"tester";
        Settings().BuddiesUrl = StandinBase() + L"/1.0/user/%s/friends.xml";
        Settings().RecentTracksUrl = StandinBase() + L"/1.0/user/%s/recenttracks.xml";
        PublishBuddyList(nullptr);
        TakeCapturedMessages();
    }
    void TearDown() override
    {
        PublishBuddyList(nullptr);
        Settings() = CSettingsValues{};
        NetworkTest::TearDown();
    }
    // A list that an earlier fetch published.
    CountedHandle<CBuddyInfo> PublishEarlierList()
    {
        auto earlier = std::make_shared<CBuddyInfo>();
        earlier->buddies.push_back(std::make_shared<CBuddy>());
        earlier->buddies[0]->name = L"earlier";
        PublishBuddyList(earlier);
        return earlier;
    }
    // What a fetch reads of the settings, as the buddy thread copies it.
    static CBuddyFetchSettings FetchSettings() { return MakeBuddyFetchSettings(Settings()); }
    std::wstring ProgressText(const CDlgStatus& progress)
    {
        return progress.ItemText(IDC_STATUS_TEXT);
    }
};

} // namespace

TEST_F(BuddyFetch, PublishesEveryFriendWithTheRawFeeds)
{
    CDlgStatus progress;
    ASSERT_TRUE(progress.Create(nullptr));
    FetchAll(FetchSettings(), progress);
    const CountedHandle<CBuddyInfo> list = CurrentBuddyList();
    EXPECT_EQ(NamesOf(list), kTesterFriends);
    ASSERT_TRUE(list);
    EXPECT_NE(list->buddies[0]->rawRecentTracks.find(L"<recenttracks user=\"alice\">"),
              std::wstring::npos);
    EXPECT_EQ(list->buddies[1]->rawRecentTracks.rfind(L"Error:", 0), 0u);
    EXPECT_TRUE(list->buddies[0]->recentTracks.empty()) << "parsed only when shown";
    EXPECT_EQ(JournalCount("feed"), 6u) << "the friends, then each friend in turn";
    EXPECT_EQ(ProgressText(progress), L"Processing erin ...");
}

// A feed of well-formed UTF-8 is read as UTF-8, even where a character
// spans two of the 32,767-byte pieces it is read in; any other feed is text
// in the ANSI code page, as before.
TEST_F(BuddyFetch, FeedsAreReadAsUtf8WholeAndOtherTextInTheAnsiCodePage)
{
    // alice's feed: 32,766 letters, then "é" in UTF-8 across the boundary;
    // bob's: "café" in code page 1252.
    Script(L"feed=ok&feed=raw:" + std::wstring(32766, L'a') + L"%5Cxc3%5Cxa9&feed=raw:caf%5Cxe9");
    CDlgStatus progress;
    ASSERT_TRUE(progress.Create(nullptr));
    FetchAll(FetchSettings(), progress);
    const CountedHandle<CBuddyInfo> list = CurrentBuddyList();
    ASSERT_EQ(NamesOf(list), kTesterFriends);
    EXPECT_EQ(list->buddies[0]->rawRecentTracks, std::wstring(32766, L'a') + L"\u00e9");
    ASSERT_EQ(GetACP(), 1252u);
    EXPECT_EQ(list->buddies[1]->rawRecentTracks, L"caf\u00e9");
}

TEST_F(BuddyFetch, NothingFetchedLeavesTheEarlierList)
{
    const CountedHandle<CBuddyInfo> earlier = PublishEarlierList();
    CDlgStatus progress;
    ASSERT_TRUE(progress.Create(nullptr));
    // A user without friends: only the friends feed is asked for.
    Settings().UserName = L"loner";
    FetchAll(FetchSettings(), progress);
    EXPECT_EQ(CurrentBuddyList(), earlier);
    EXPECT_EQ(JournalCount("feed"), 1u);
    EXPECT_EQ(ProgressText(progress), L"Fetching buddies ...");

    // Friends, but no feed of theirs can be reached: each is tried, each
    // failure is logged, and nothing is published.
    Settings().UserName = L"tester";
    Settings().RecentTracksUrl = L"http://127.0.0.1:1/1.0/user/%s/recenttracks.xml";
    FetchAll(FetchSettings(), progress);
    EXPECT_EQ(CurrentBuddyList(), earlier) << "a fetch that got no tracks publishes nothing";
    const std::vector<std::wstring> texts = StatusTexts();
    EXPECT_EQ(std::count(texts.begin(), texts.end(),
                         L"\thttp://127.0.0.1:1/1.0/user/erin/recenttracks.xml"),
              1);
    EXPECT_EQ(
        std::count(texts.begin(), texts.end(), L"Got error 12029 while trying to connect to:"), 5);
}

TEST_F(BuddyFetch, ShutdownStopsTheLoopAtTheBuddyBeingFetched)
{
    const CountedHandle<CBuddyInfo> earlier = PublishEarlierList();
    // alice's feed is slow; the plug-in shuts down meanwhile.
    Script(L"feed=ok&feed=delay:45");
    std::atomic<bool> done{false};
    std::thread fetching([&done] {
        CDlgStatus progress;
        progress.Create(nullptr);
        FetchAll(FetchSettings(), progress);
        done = true;
    });
    const bool asked = WaitFor([] { return JournalCount("feed") == 2; }, kThreadStepMs);
    SetEvent(EventShutdown());
    const bool stopped = WaitFor([&done] { return done.load(); }, kThreadStepMs);
    if (!stopped)
    {
        ADD_FAILURE() << "the fetch did not stop at the shutdown";
        std::fflush(nullptr);
        std::_Exit(1); // nothing is ever killed; the run ends here
    }
    fetching.join();
    ResetEvent(EventShutdown());
    EXPECT_TRUE(asked);
    EXPECT_EQ(JournalCount("feed"), 2u) << "no friend after alice was asked for";
    EXPECT_EQ(CurrentBuddyList(), earlier);
    EXPECT_TRUE(StatusLogHas(L"Shutdown requested while trying to connect to:"));
}

// The thread that fetches owns the progress window and handles its messages
// while it waits for the service: with alice's feed held, the window answers
// a message sent from another thread, and the close box or Esc closes it
// there and then. Closing it lets the fetch go on, which ends as it would
// have; the window, gone, is never touched again.
TEST_F(BuddyFetch, TheProgressAnswersDuringAHeldRequestAndClosingItLetsTheFetchGoOn)
{
    const std::pair<const char*, UINT> closings[] = {{"the close box", WM_CLOSE},
                                                     {"Esc", WM_KEYDOWN}};
    for (const auto& [name, closing] : closings)
    {
        SCOPED_TRACE(name);
        ASSERT_TRUE(ControlStandin(L"reset"));
        PublishBuddyList(nullptr);
        Script(L"feed=ok&feed=hold");
        std::atomic<HWND> window{nullptr};
        std::atomic<bool> done{false};
        HWND windowAfterwards = nullptr;
        std::thread fetching([&] {
            CDlgStatus progress;
            progress.Create(nullptr);
            window = progress.Window();
            CBuddyFetchSettings settings = FetchSettings();
            settings.timeoutMs = 10 * kThreadStepMs; // only the test lets the request go
            FetchAll(settings, progress);
            windowAfterwards = progress.Window();
            progress.SetProgressText(L"not shown");
            progress.Destroy();
            done = true;
        });
        // Lets the request go and waits for the fetch to end: below, and
        // whichever way this step ends, before its stack goes.
        const auto letGoAndAwait = [&done](std::thread* thread) {
            if (!thread->joinable())
                return;
            ControlStandin(L"release");
            if (!WaitFor([&done] { return done.load(); }, kThreadStepMs))
            {
                ADD_FAILURE() << "the fetch did not end";
                std::fflush(nullptr);
                std::_Exit(1); // nothing is ever killed; the run ends here
            }
            thread->join();
        };
        const std::unique_ptr<std::thread, decltype(letGoAndAwait)> ending(&fetching,
                                                                           letGoAndAwait);
        ASSERT_TRUE(WaitFor([] { return JournalCount("feed") == 2; }, kThreadStepMs))
            << "alice's feed was asked for";
        ASSERT_NE(window.load(), nullptr);
        DWORD_PTR answer = 0;
        EXPECT_NE(SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, kThreadStepMs, &answer),
                  0)
            << "the window answered while its thread waited for the service";
        PostMessageW(window, closing, closing == WM_KEYDOWN ? VK_ESCAPE : 0, 0);
        EXPECT_TRUE(WaitFor([&window] { return !IsWindow(window); }, kThreadStepMs))
            << "the window closed while its thread waited for the service";
        letGoAndAwait(&fetching);
        EXPECT_EQ(windowAfterwards, nullptr) << "the closed window is forgotten";
        const CountedHandle<CBuddyInfo> list = CurrentBuddyList();
        EXPECT_EQ(NamesOf(list), kTesterFriends) << "the fetch went on to the last friend";
        ASSERT_TRUE(list);
        EXPECT_NE(list->buddies[0]->rawRecentTracks.find(L"<recenttracks user=\"alice\">"),
                  std::wstring::npos);
        EXPECT_EQ(JournalCount("feed"), 6u);
    }
}

// The buddy thread reads a copy of the settings taken when it was made: the
// options sheet may change them while the friends feed is still held by the
// service, and the rest of the fetch goes on with the values it started with.
TEST_F(BuddyFetch, TheBuddyThreadFetchesWithTheSettingsItStartedWith)
{
    Script(L"feed=hold");
    StartBuddyThread(nullptr);
    Settings().UserName = L"loner";
    Settings().BuddiesUrl = StandinBase() + L"/1.0/user/%s/changed/friends.xml";
    Settings().RecentTracksUrl = StandinBase() + L"/1.0/user/changed-%s/recenttracks.xml";
    Settings().AgentName = L"Changed Agent";
    ASSERT_TRUE(ControlStandin(L"release"));
    HWND dialog = nullptr;
    PumpUntil(
        [&dialog] { return (dialog = FindWindowW(nullptr, L"Friend Information")) != nullptr; },
        kThreadStepMs);
    PostMessageW(dialog, WM_CLOSE, 0, 0);
    AwaitThreadsEnd();
    ASSERT_NE(dialog, nullptr) << "the fetched list is shown";
    std::vector<std::string> expected = {"/1.0/user/tester/friends.xml"};
    for (const std::wstring& name : kTesterFriends)
        expected.push_back("/1.0/user/" + std::string(name.begin(), name.end()) +
                           "/recenttracks.xml");
    EXPECT_EQ(JournalPaths("feed"), expected);
    EXPECT_EQ(NamesOf(CurrentBuddyList()), kTesterFriends);
}

TEST_F(BuddyFetch, ThreadsOfTheHotKeys)
{
    // The buddy thread reaches the player from its own apartment, through
    // this thread's message loop.
    ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
    // Every call the player answers, as "call MEMBER(ARGUMENTS) = ANSWER";
    // written and read under the player's lock.
    std::vector<std::wstring> calls;
    CSharedPlayer player(
        CPlayerModel({SongFile(7, L"Plain.mp3", L"Plain Artist", L"Plain Song"),
                      SongFile(8, L"Bj\u00f6rk - J\u00f3ga.mp3", L"Bj\u00f6rk", L"J\u00f3ga")},
                     {0}, [&calls](double, const std::wstring& text) { calls.push_back(text); }));
    player.Access()->Play(0);
    CRefLedger ledger;
    CAutomationContext context{player, ledger, true};
    auto automation = CComPtr<IDispatch>::Adopt(CreateAutomation(context));
    HWND window = CreateTestWindow(L"BuddyThreadPluginWindow", PluginWindowProc);
    SetHostAutomation(automation.Get());
    // The plug-in lets go of the player before the player (on this stack)
    // goes, whichever way the test ends.
    const std::unique_ptr<void, void (*)(void*)> unplug(window, [](void* plugin) {
        SetHostAutomation(nullptr);
        DestroyWindow(static_cast<HWND>(plugin));
    });

    // The recommendation thread looks at the track that plays (the current
    // playlist, its index and that file) and shows and sends nothing.
    player.Access()->Event(L"recommendation thread");
    StartRecommendationThread();
    AwaitThreadsEnd();
    EXPECT_EQ(JournalCount("feed"), 0u);
    EXPECT_TRUE(TakeCapturedMessages().empty());
    {
        const auto access = player.Access();
        const auto start = std::find(calls.begin(), calls.end(), L"recommendation thread");
        std::vector<std::wstring> members;
        for (auto call = start; call != calls.end(); ++call)
            if (call->rfind(L"call ", 0) == 0)
                members.push_back(call->substr(5, call->find(L" = ") - 5));
        for (const wchar_t* member :
             {L"automation 3", L"playlist 4", L"playlist 1", L"playlist 5(0)", L"file 3"})
            EXPECT_TRUE(std::find(members.begin(), members.end(), member) != members.end())
                << "the player was asked for " << testing::PrintToString(std::wstring(member))
                << "; it was asked for " << testing::PrintToString(members);
    }

    // The buddy thread: alice, shown first, has non-Latin names in her UTF-8
    // feed, which read right on a Western system and find her first track in
    // the library; erin's first track is in the library too; a double click
    // on it plays it in the player; the close box ends the thread.
    EXPECT_EQ(GetACP(), 1252u) << "the feeds are read where ANSI text is Western European";
    StartBuddyThread(window);
    HWND dialog = nullptr;
    PumpUntil(
        [&dialog] { return (dialog = FindWindowW(nullptr, L"Friend Information")) != nullptr; },
        kThreadStepMs);
    // Whatever happens below, the dialog is closed and its thread ends.
    const std::unique_ptr<void, void (*)(void*)> closing(dialog, [](void* window) {
        PostMessageW(static_cast<HWND>(window), WM_CLOSE, 0, 0);
        AwaitThreadsEnd();
    });
    ASSERT_NE(dialog, nullptr);
    // The dialog may be found before it has made its controls and its page.
    HWND tracks = nullptr;
    EXPECT_TRUE(PumpUntil(
        [dialog, &tracks] {
            HWND page =
                FindWindowExW(GetDlgItem(dialog, IDC_BUDDY_TABS), nullptr, L"#32770", nullptr);
            tracks = GetDlgItem(page, IDC_BUDDY_TRACKS);
            return tracks != nullptr && ListView_GetItemCount(tracks) > 0;
        },
        kThreadStepMs))
        << "the first buddy is shown once the dialog shows";
    ASSERT_NE(tracks, nullptr);
    const auto cellText = [tracks](int row, int column) {
        wchar_t text[64] = {};
        ListView_GetItemText(tracks, row, column, text, 64);
        return std::wstring(text);
    };
    const auto rowImage = [tracks](int row) {
        LVITEMW item{};
        item.mask = LVIF_IMAGE;
        item.iItem = row;
        ListView_GetItem(tracks, &item);
        return item.iImage;
    };
    EXPECT_EQ(cellText(0, 0), L"Bj\u00f6rk");
    EXPECT_EQ(cellText(0, 1), L"J\u00f3ga");
    EXPECT_EQ(cellText(2, 0), L"\u041a\u0438\u043d\u043e");
    EXPECT_EQ(rowImage(0), 0) << "the library icon: the match found the file";
    EXPECT_NE(rowImage(2), 0) << "not in the library";
    HWND names = GetDlgItem(dialog, IDC_BUDDY_NAMES);
    EXPECT_EQ(SendMessageW(names, LB_GETCURSEL, 0, 0), 0);
    // The user picks erin. Posted: the buddy thread calls the player while
    // it handles the pick, which a sent message would not allow.
    SendMessageW(names, LB_SETCURSEL, 4, 0);
    PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDC_BUDDY_NAMES, LBN_SELCHANGE),
                 reinterpret_cast<LPARAM>(names));
    EXPECT_TRUE(
        PumpUntil([&cellText] { return cellText(0, 0) == L"Plain Artist"; }, kThreadStepMs));
    ASSERT_EQ(ListView_GetItemCount(tracks), 2);
    EXPECT_EQ(rowImage(0), 0) << "the library icon";
    RECT row{};
    ListView_GetItemRect(tracks, 0, &row, LVIR_LABEL);
    const LPARAM point = MAKELPARAM(row.left + 4, (row.top + row.bottom) / 2);
    for (UINT message : {WM_LBUTTONDOWN, WM_LBUTTONUP, WM_LBUTTONDBLCLK, WM_LBUTTONUP})
        PostMessageW(tracks, message, message == WM_LBUTTONUP ? 0 : MK_LBUTTON, point);
    EXPECT_TRUE(PumpUntil([&player] { return !player.Access()->History().playRequests.empty(); },
                          kThreadStepMs));
    EXPECT_EQ(player.Access()->History().playRequests, std::vector<int>{7});
    PostMessageW(dialog, WM_CLOSE, 0, 0);
    AwaitThreadsEnd();
    EXPECT_EQ(NamesOf(CurrentBuddyList()), kTesterFriends);
    // The rest of the test needs the dialog no more.

    // A user without friends and no earlier list: the message, and the end.
    PublishBuddyList(nullptr);
    Settings().UserName = L"loner";
    StartBuddyThread(window);
    AwaitThreadsEnd();
    std::vector<std::wstring> texts;
    for (const CapturedMessage& message : TakeCapturedMessages())
        texts.push_back(message.text);
    EXPECT_EQ(texts, std::vector<std::wstring>{L"No buddy information found!"});

    SetHostAutomation(nullptr);
    automation.Release();
    EXPECT_TRUE(PumpUntil([&ledger] { return ledger.Total() == 0; }, kThreadStepMs))
        << "every reference released: " << testing::PrintToString(ledger.Describe());
    CoUninitialize();
}
