// The buddy dialog on real windows (Xvfb), driven from inside its modal
// loop, with the simulated player's automation objects as the library: the
// list of buddies, a buddy's tracks with the library icon, the Play button
// and the play request that reaches the player, a buddy whose feed answered
// with an error, a buddy without tracks, and the ways the dialog ends.
#include "buddies/buddy_info.h"
#include "buddies/dlg_buddies.h"
#include "host/host_state.h"
#include "host/play_request.h"
#include "resources/resource_ids.h"
#include "support/com_ptr.h"
#include "tools/dialog_driver/dialog_driver.h"
#include "tools/player/automation_objects.h"
#include "ui/test_window.h"

#include <commctrl.h>

#include <gtest/gtest.h>

using namespace cvas;
using namespace cvas::player;
using namespace cvas::tools;

namespace
{

const std::wstring kDialog = L"Friend Information";

std::wstring Feed(const std::wstring& tracks)
{
    return L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<recenttracks user=\"x\">" + tracks +
           L"</recenttracks>";
}

std::wstring Track(const std::wstring& artist, const std::wstring& name)
{
    return L"<track><artist mbid=\"\">" + artist + L"</artist><name>" + name +
           L"</name><mbid/><album mbid=\"\">A</album><url>http://example.invalid/t</url>"
           L"<date uts=\"1700000000\">14 Nov 2023, 22:13</date></track>";
}

CountedHandle<CBuddy> Buddy(const std::wstring& name, const std::wstring& raw)
{
    auto buddy = std::make_shared<CBuddy>();
    buddy->name = name;
    buddy->rawRecentTracks = raw;
    return buddy;
}

std::vector<int> g_playRequests;

LRESULT CALLBACK PluginWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == kPlayRequestMessage)
    {
        g_playRequests.push_back(static_cast<int>(wParam));
        PlayLibraryFile(static_cast<int>(wParam));
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

class BuddyDialog : public testing::Test
{
protected:
    BuddyDialog()
        : player(CPlayerModel({SongFile(11, L"Björk - Jóga.mp3", L"Björk", L"Jóga"),
                               SongFile(22, L"Other.mp3", L"Other", L"Song")},
                              {0}, [](double, const std::wstring&) {})),
          context{player, ledger, false},
          automation(CComPtr<IDispatch>::Adopt(CreateAutomation(context)))
    {
    }
    void SetUp() override
    {
        g_playRequests.clear();
        window = test::CreateTestWindow(L"BuddyPluginWindow", PluginWindowProc);
        SetHostAutomation(automation.Get());
        list = std::make_shared<CBuddyInfo>();
        list->buddies = {Buddy(L"alice", Feed(Track(L"Björk", L"Jóga") + Track(L"Nobody", L"Else") +
                                              Track(L"The [Bracket] Band", L"Song"))),
                         Buddy(L"bob", L"Error: User not found"), Buddy(L"carol", Feed(L""))};
    }
    void TearDown() override
    {
        SetHostAutomation(nullptr);
        DestroyWindow(window);
        list.reset();
    }
    INT_PTR Open()
    {
        INT_PTR result = -2;
        driver.Run([&] {
            CDlgBuddies dialog(list, automation.Get(), window);
            result = dialog.DoModal(window);
        });
        EXPECT_TRUE(driver.AllStepsRan()) << "the dialog closed before every step ran";
        EXPECT_FALSE(driver.Cancelled()) << "the dialog was still open after the last step";
        return result;
    }

    CSharedPlayer player;
    CRefLedger ledger;
    CAutomationContext context;
    CComPtr<IDispatch> automation;
    HWND window = nullptr;
    CountedHandle<CBuddyInfo> list;
    CDialogDriver driver;
};

HWND Dialog()
{
    return FindDialog(kDialog);
}

HWND TracksPage()
{
    return FindWindowExW(GetDlgItem(Dialog(), IDC_BUDDY_TABS), nullptr, L"#32770", nullptr);
}

HWND Tracks()
{
    return GetDlgItem(TracksPage(), IDC_BUDDY_TRACKS);
}

// "artist|image" of every row.
std::vector<std::wstring> Rows()
{
    std::vector<std::wstring> rows;
    for (int row = 0; row < ListView_GetItemCount(Tracks()); ++row)
    {
        wchar_t text[256] = {};
        LVITEMW item{};
        item.mask = LVIF_TEXT | LVIF_IMAGE;
        item.iItem = row;
        item.pszText = text;
        item.cchTextMax = 256;
        ListView_GetItem(Tracks(), &item);
        rows.push_back(std::wstring(text) + L"|" + std::to_wstring(item.iImage));
    }
    return rows;
}

std::vector<std::wstring> Names()
{
    std::vector<std::wstring> names;
    HWND box = GetDlgItem(Dialog(), IDC_BUDDY_NAMES);
    for (int row = 0; row < SendMessageW(box, LB_GETCOUNT, 0, 0); ++row)
    {
        wchar_t text[256] = {};
        SendMessageW(box, LB_GETTEXT, row, reinterpret_cast<LPARAM>(text));
        names.push_back(text);
    }
    return names;
}

// The user picks the buddy at index in the list box.
void ChooseBuddy(int index)
{
    HWND box = GetDlgItem(Dialog(), IDC_BUDDY_NAMES);
    SendMessageW(box, LB_SETCURSEL, index, 0);
    SendMessageW(Dialog(), WM_COMMAND, MAKEWPARAM(IDC_BUDDY_NAMES, LBN_SELCHANGE),
                 reinterpret_cast<LPARAM>(box));
}

} // namespace

TEST_F(BuddyDialog, ShowsTheFirstBuddyAndPlaysOnlyTracksInTheLibrary)
{
    driver.Then([this] {
        EXPECT_EQ(Names(), (std::vector<std::wstring>{L"alice", L"bob", L"carol"}))
            << "in the list's order, although the list box sorts";
        EXPECT_EQ(SendMessageW(GetDlgItem(Dialog(), IDC_BUDDY_NAMES), LB_GETCURSEL, 0, 0), 0);
        // The bracketed name goes into the search as it stands and finds nothing.
        EXPECT_EQ(Rows(),
                  (std::vector<std::wstring>{L"Björk|0", L"Nobody|-1", L"The [Bracket] Band|-1"}));
        EXPECT_TRUE(list->buddies[0]->rawRecentTracks.empty()) << "parsed once, then emptied";
        EXPECT_FALSE(IsEnabled(TracksPage(), IDC_PLAY));
        ClickRow(Tracks(), 1);
    });
    driver.Then([] {
        EXPECT_FALSE(IsEnabled(TracksPage(), IDC_PLAY));
        ClickRow(Tracks(), 1, true); // no library match: nothing to play
        ClickRow(Tracks(), 0);
    });
    driver.Then([] {
        EXPECT_TRUE(IsEnabled(TracksPage(), IDC_PLAY));
        ClickBelowRows(Tracks());
    });
    driver.Then([] {
        EXPECT_TRUE(IsEnabled(TracksPage(), IDC_PLAY)) << "a click beside the rows changes nothing";
        EXPECT_TRUE(g_playRequests.empty());
        ClickRow(Tracks(), 0, true);
    });
    driver.Then([] {
        EXPECT_EQ(g_playRequests, std::vector<int>{11});
        Click(TracksPage(), IDC_PLAY);
    });
    driver.Then([] { PostMessageW(Dialog(), WM_CLOSE, 0, 0); });
    EXPECT_EQ(Open(), 0) << "the close box ends the dialog with 0";
    EXPECT_EQ(g_playRequests, (std::vector<int>{11, 11}));
    EXPECT_EQ(player.Access()->History().playRequests, (std::vector<int>{11, 11}))
        << "the player got the file";
}

// A row without a library match keeps the image value -1, which the list
// control takes as "ask the parent"; asked, the page answers -1, no image of
// the list, so that nothing is drawn whatever the request held.
TEST_F(BuddyDialog, RowsWithoutAMatchShowNoImage)
{
    driver.Then([] {
        ASSERT_EQ(Rows(),
                  (std::vector<std::wstring>{L"Björk|0", L"Nobody|-1", L"The [Bracket] Band|-1"}));
        std::vector<int> answers;
        for (int row = 0; row < 3; ++row)
        {
            NMLVDISPINFOW request{};
            request.hdr.hwndFrom = Tracks();
            request.hdr.idFrom = IDC_BUDDY_TRACKS;
            request.hdr.code = LVN_GETDISPINFOW;
            request.item.mask = LVIF_IMAGE;
            request.item.iItem = row;
            request.item.iImage = 0; // the library icon, unless the page answers
            SendMessageW(TracksPage(), WM_NOTIFY, IDC_BUDDY_TRACKS,
                         reinterpret_cast<LPARAM>(&request));
            answers.push_back(request.item.iImage);
        }
        EXPECT_EQ(answers, (std::vector<int>{0, -1, -1}));
        Click(Dialog(), IDOK);
    });
    EXPECT_EQ(Open(), IDOK);
}

TEST_F(BuddyDialog, ErrorAnswersEmptyBuddiesAndReselection)
{
    driver.Then([] { ChooseBuddy(1); });
    driver.Then([this] {
        EXPECT_TRUE(Rows().empty());
        EXPECT_EQ(list->buddies[1]->rawRecentTracks, L"Error: User not found")
            << "an error answer is kept and tried again when shown again";
        ChooseBuddy(2);
    });
    driver.Then([] {
        EXPECT_TRUE(Rows().empty());
        for (int column = 0; column < 3; ++column)
            EXPECT_EQ(ListView_GetColumnWidth(Tracks(), column), 100) << column;
        ChooseBuddy(1);
    });
    driver.Then([this] {
        EXPECT_TRUE(Rows().empty()) << "shown again, the error answer fails again";
        EXPECT_EQ(list->buddies[1]->rawRecentTracks, L"Error: User not found");
        // Chosen once more, the buddy is parsed once more: now its answer
        // holds a track, which shows.
        list->buddies[1]->rawRecentTracks = Feed(Track(L"Other", L"Song"));
        ChooseBuddy(1);
    });
    driver.Then([this] {
        EXPECT_EQ(Rows(), std::vector<std::wstring>{L"Other|0"});
        EXPECT_TRUE(list->buddies[1]->rawRecentTracks.empty());
        ChooseBuddy(0);
    });
    driver.Then([] {
        ASSERT_EQ(Rows().size(), 3u);
        ListView_DeleteItem(Tracks(), 2);
        ChooseBuddy(0); // the same buddy again: the list is not filled again
    });
    driver.Then([] {
        EXPECT_EQ(Rows().size(), 2u);
        EXPECT_GT(ListView_GetColumnWidth(Tracks(), 0), 0);
        Click(Dialog(), IDOK);
    });
    EXPECT_EQ(Open(), IDOK);
}

TEST_F(BuddyDialog, OneBuddyIsShownAtOnce)
{
    list->buddies.resize(1);
    driver.Then([] {
        EXPECT_EQ(Rows().size(), 3u);
        Click(Dialog(), IDOK);
    });
    EXPECT_EQ(Open(), IDOK);
}
