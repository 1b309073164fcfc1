// The player's automation object, its playlist snapshot and the play request
// against a scripted fake player.
#include "common/captured_messages.h"
#include "common/temp_folder.h"
#include "host/automation_call.h"
#include "host/bx_tracks.h"
#include "host/fake_player.h"
#include "host/play_request.h"
#include "plugin/module_state.h"
#include "plugin/window_messages.h"
#include "scrobbler/data_files.h"
#include "scrobbler/engine_state.h"
#include "scrobbler/submission_queue.h"
#include "settings/data_folder.h"
#include "support/logs.h"
#include "support/message_box.h"

#include <gtest/gtest.h>

#include <windows.h>

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

    test::CTempFolder folder;
    test::CFakePlayer player;
    CComPtr<IDispatch> automation =
        CComPtr<IDispatch>::Adopt(new test::CFakeObject(player, L"automation"));
    HWND window = nullptr;
};

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
