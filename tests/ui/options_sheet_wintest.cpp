// The options sheet and the replacement dialog, driven through their real
// windows as a person would, under Wine and Xvfb. Message boxes are
// captured; the shell's "open" goes through its seam.
#include "common/captured_messages.h"
#include "common/temp_folder.h"
#include "resources/resource_ids.h"
#include "scrobbler/queue/data_files.h"
#include "scrobbler/queue/replacements_file.h"
#include "settings/data_folder.h"
#include "settings/ini_file.h"
#include "settings/live_settings.h"
#include "settings/log_settings.h"
#include "settings/settings_values.h"
#include "support/logs.h"
#include "tools/dialog_driver/dialog_driver.h"
#include "ui/options/open_options.h"
#include "ui/shell_open.h"
#include "ui/test_window.h"

#include <commctrl.h>

#include <gtest/gtest.h>

#include <optional>

using namespace cvas;
using namespace cvas::test;
using namespace cvas::tools;

namespace
{

const std::wstring kSheet = L"Options for last.fm";
enum EPage
{
    kMain,
    kLogging,
    kReplace,
    kFilter,
    kBuddy,
    kAdvanced,
    kAbout
};

class OptionsSheet : public testing::Test
{
protected:
    void SetUp() override
    {
        OverrideSpecialFolders(folder.File(L"Documents"), folder.File(L"AppData"));
        ForgetDataFilePaths();
        CreateFolderLevels(DataFolder());
        OpenLogs(CIni(SettingsFilePath()));
        Settings() = CSettingsValues{};
        Settings().Enabled = true;
        Settings().UserName = L"tester";
        Settings().Password = L"secret";
        SetCurrentReplacements({{L"ABBA", L"Abba"}, {L"B", L"b"}, {L"C", L"c"}});
        owner = CreateTestWindow(L"OptionsOwner");
        TakeCapturedMessages();
        SetCapturedAnswer(IDOK);
    }
    void TearDown() override
    {
        DestroyWindow(owner);
        CloseLogs();
        SetCurrentReplacements({});
        Settings() = CSettingsValues{};
        OverrideSpecialFolders(L"", L"");
        ForgetDataFilePaths();
        SetCapturedAnswer(IDOK);
    }

    // Opens the sheet and runs the driver's script in it; returns whether
    // it was confirmed.
    bool Open(bool forceEnable = false)
    {
        bool confirmed = false;
        EXPECT_TRUE(driver.Run([&] {
            confirmed =
                OpenOptionsSheet(owner, forceEnable, [this](bool enabled) { applied = enabled; });
        }));
        return confirmed;
    }
    // Steps that act on the sheet's page i.
    void OnPage(int index, std::function<void(HWND page)> act)
    {
        driver.Then([index] { SendMessageW(FindDialog(kSheet), PSM_SETCURSEL, index, 0); });
        driver.Then([act] { act(CurrentPage(FindDialog(kSheet))); });
    }
    void PressOk()
    {
        driver.Then([] { SendMessageW(FindDialog(kSheet), PSM_PRESSBUTTON, PSBTN_OK, 0); });
    }
    void PressCancel()
    {
        driver.Then([] { SendMessageW(FindDialog(kSheet), PSM_PRESSBUTTON, PSBTN_CANCEL, 0); });
    }
    // The boxes shown so far, as Seen() describes them, each also checked
    // for its caption.
    std::vector<std::wstring> MessageBoxes()
    {
        std::vector<std::wstring> boxes;
        for (const CapturedMessage& message : TakeCapturedMessages())
        {
            EXPECT_EQ(message.caption, L"last.fm");
            boxes.push_back(Seen(message));
        }
        return boxes;
    }
    CSettingsValues SavedSettings() const { return ReadSettings(CIni(SettingsFilePath())); }

    CTempFolder folder;
    HWND owner = nullptr;
    CDialogDriver driver;
    std::optional<bool> applied; // what the sheet asked of the worker
};

HWND List(HWND page)
{
    return GetDlgItem(page, IDC_REPLACEMENTS);
}

std::vector<std::wstring> Rows(HWND page)
{
    std::vector<std::wstring> rows;
    HWND list = List(page);
    for (int row = 0; row < ListView_GetItemCount(list); ++row)
    {
        wchar_t left[256] = {};
        wchar_t right[256] = {};
        ListView_GetItemText(list, row, 0, left, 256);
        ListView_GetItemText(list, row, 1, right, 256);
        rows.push_back(std::wstring(left) + L">" + right);
    }
    return rows;
}

int Selected(HWND page)
{
    return ListView_GetNextItem(List(page), -1, LVNI_SELECTED);
}

// Delete, Modify, Up, Down: "1" for enabled.
std::string RowButtons(HWND page)
{
    std::string states;
    for (int id : {IDC_DELETE, IDC_MODIFY, IDC_MOVE_UP, IDC_MOVE_DOWN})
        states += IsEnabled(page, id) ? '1' : '0';
    return states;
}

} // namespace

TEST_F(OptionsSheet, OkTakesBackEveryPageSavesAndRestartsTheWorker)
{
    std::wstring shownQueueFile;
    OnPage(kMain, [](HWND page) {
        EXPECT_TRUE(IsChecked(page, IDC_ENABLED));
        EXPECT_EQ(TextOf(page, IDC_USER_NAME), L"tester");
        Type(page, IDC_USER_NAME, L"Пётр");
        Type(page, IDC_PASSWORD, L"new secret");
        Click(page, IDC_REATTEMPT);
        Click(page, IDC_SUBMIT_AT_START);
    });
    OnPage(kLogging, [&shownQueueFile](HWND page) {
        shownQueueFile = TextOf(page, IDC_QUEUE_FILE);
        Type(page, IDC_QUEUE_FILE, L"not taken back");
    });
    OnPage(kFilter, [](HWND page) { Type(page, IDC_FILTER, L"Genre=[Rock]\r\nYear=[1999]"); });
    OnPage(kBuddy, [](HWND page) {
        Click(page, IDC_BUDDY_ENABLED);
        Type(page, IDC_BUDDY_HOTKEY, L"Ctrl+Shift+F9");
    });
    OnPage(kAdvanced, [](HWND page) {
        EXPECT_EQ(TextOf(page, IDC_ARTIST), L"[ARTIST]");
        Type(page, IDC_ALBUM, L"[ALBUM] (live)");
    });
    OnPage(kAbout, [](HWND page) {
        EXPECT_EQ(TextOf(page, IDC_ABOUT_VERSION).rfind(L"Version: 1.", 0), 0u)
            << testing::PrintToString(TextOf(page, IDC_ABOUT_VERSION));
    });
    PressOk();
    ASSERT_TRUE(Open());

    EXPECT_EQ(shownQueueFile, QueueFilePath());
    EXPECT_TRUE(MessageBoxes().empty());
    EXPECT_EQ(applied, std::optional<bool>(true));
    const CSettingsValues saved = SavedSettings();
    for (const CSettingsValues* values : {static_cast<const CSettingsValues*>(&Settings()), &saved})
    {
        EXPECT_TRUE(values->Enabled);
        EXPECT_EQ(values->UserName, L"Пётр");
        EXPECT_EQ(values->Password, L"new secret");
        EXPECT_TRUE(values->ReattemptFailed);
        EXPECT_FALSE(values->SubmitTracksOnStartup);
        EXPECT_EQ(values->Filter, L"Genre=[Rock]\r\nYear=[1999]");
        EXPECT_TRUE(values->EnableBuddySystem);
        EXPECT_EQ(values->BuddyHotkey, L"Ctrl+Shift+F9");
        EXPECT_EQ(values->Album, L"[ALBUM] (live)");
        EXPECT_EQ(values->Artist, L"[ARTIST]");
    }
    EXPECT_TRUE(FileExists(ReplacementsFilePath())) << "the replacements are saved too";
}

TEST_F(OptionsSheet, ConfirmedWithScrobblingOffWarnsAndSavesAnyway)
{
    OnPage(kMain, [](HWND page) { Click(page, IDC_ENABLED); });
    PressOk();
    ASSERT_TRUE(Open());
    EXPECT_EQ(MessageBoxes(), std::vector<std::wstring>{
                                  L"information, OK: WARNING\n\nlast.fm support not activated!"});
    EXPECT_EQ(applied, std::optional<bool>(false));
    EXPECT_FALSE(SavedSettings().Enabled);
    EXPECT_TRUE(CIni(SettingsFilePath()).FileExists());
}

TEST_F(OptionsSheet, EnabledWithoutAccountKeepsTheSheetOpenOnMain)
{
    // Forced on by a first start, with no password yet.
    Settings().Enabled = false;
    Settings().Password.clear();
    OnPage(kMain, [](HWND page) { EXPECT_TRUE(IsChecked(page, IDC_ENABLED)); });
    // Changing tabs checks nothing.
    OnPage(kFilter, [this](HWND) { EXPECT_TRUE(MessageBoxes().empty()); });
    PressOk();
    driver.Then([this] {
        HWND sheet = FindDialog(kSheet);
        ASSERT_NE(sheet, nullptr) << "the sheet stays open";
        EXPECT_EQ(CurrentPageIndex(sheet), kMain);
        EXPECT_EQ(MessageBoxes(),
                  std::vector<std::wstring>{
                      L"information, OK: last.fm support enabled but no password specified!"});
        HWND page = CurrentPage(sheet);
        Type(page, IDC_USER_NAME, L"");
    });
    PressOk();
    driver.Then([this] {
        EXPECT_EQ(MessageBoxes(),
                  std::vector<std::wstring>{
                      L"information, OK: last.fm support enabled but no username specified!"});
    });
    PressCancel();
    EXPECT_FALSE(Open(true));
    EXPECT_FALSE(applied.has_value());
    EXPECT_FALSE(CIni(SettingsFilePath()).FileExists()) << "Cancel saves nothing";
    EXPECT_EQ(Settings().UserName, L"tester");
}

TEST_F(OptionsSheet, ReplacePageButtonsFollowTheSelectedRow)
{
    SetCapturedAnswer(IDYES);
    OnPage(kReplace, [](HWND page) {
        EXPECT_EQ(Rows(page), (std::vector<std::wstring>{L"ABBA>Abba", L"B>b", L"C>c"}));
        EXPECT_EQ(Selected(page), 0);
        EXPECT_EQ(RowButtons(page), "1101");
        ClickRow(List(page), 2);
    });
    driver.Then([] {
        HWND page = CurrentPage(FindDialog(kSheet));
        EXPECT_EQ(RowButtons(page), "1110");
        ClickRow(List(page), 1);
    });
    driver.Then([] {
        HWND page = CurrentPage(FindDialog(kSheet));
        EXPECT_EQ(RowButtons(page), "1111");
        ClickBelowRows(List(page));
    });
    driver.Then([] {
        HWND page = CurrentPage(FindDialog(kSheet));
        EXPECT_EQ(RowButtons(page), "0000") << "a click beside the rows";
        ClickRow(List(page), 2);
    });
    // Delete the last row: the one above is selected, the buttons stay.
    driver.Then([] { Click(CurrentPage(FindDialog(kSheet)), IDC_DELETE); });
    driver.Then([this] {
        HWND page = CurrentPage(FindDialog(kSheet));
        EXPECT_EQ(MessageBoxes(),
                  std::vector<std::wstring>{
                      L"question, Yes/No: Are you sure you want to delete this item?"});
        EXPECT_EQ(Rows(page), (std::vector<std::wstring>{L"ABBA>Abba", L"B>b"}));
        EXPECT_EQ(Selected(page), 1);
        EXPECT_EQ(RowButtons(page), "1110");
        Click(page, IDC_DELETE);
    });
    driver.Then([] { Click(CurrentPage(FindDialog(kSheet)), IDC_DELETE); });
    driver.Then([] {
        HWND page = CurrentPage(FindDialog(kSheet));
        EXPECT_TRUE(Rows(page).empty());
        EXPECT_EQ(RowButtons(page), "0000") << "the last row deleted";
    });
    PressCancel();
    EXPECT_FALSE(Open());
    EXPECT_EQ(CurrentReplacements().size(), 3u) << "Cancel leaves the live list alone";
    EXPECT_FALSE(FileExists(ReplacementsFilePath()));
}

TEST_F(OptionsSheet, ModifyAfterAMoveTakesThePagesEntryAtThatPosition)
{
    OnPage(kReplace, [](HWND page) { ClickRow(List(page), 1); });
    driver.Then([] { Click(CurrentPage(FindDialog(kSheet)), IDC_MOVE_UP); });
    driver.Then([] {
        HWND page = CurrentPage(FindDialog(kSheet));
        EXPECT_EQ(Rows(page), (std::vector<std::wstring>{L"B>b", L"ABBA>Abba", L"C>c"}));
        EXPECT_EQ(Selected(page), 0);
        EXPECT_EQ(RowButtons(page), "1101");
        ClickRow(List(page), 0, true); // a double click runs Modify
    });
    driver.Then([] {
        // Row 0 shows B, but the page's list still has ABBA first.
        HWND dialog = FindDialog(L"Modify Replacement");
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(TextOf(dialog, IDC_REPLACE_THIS), L"ABBA");
        EXPECT_EQ(TextOf(dialog, IDC_WITH_THIS), L"Abba") << "both texts are filled in";
        EXPECT_TRUE(IsEnabled(dialog, IDOK));
        Type(dialog, IDC_WITH_THIS, L"ABBA!");
        Click(dialog, IDOK);
    });
    driver.Then([] {
        HWND page = CurrentPage(FindDialog(kSheet));
        EXPECT_EQ(Rows(page), (std::vector<std::wstring>{L"ABBA>ABBA!", L"ABBA>Abba", L"C>c"}));
    });
    PressOk();
    ASSERT_TRUE(Open());
    // OK rebuilds the list from the rows, top to bottom.
    const CReplacementTable live = CurrentReplacements();
    ASSERT_EQ(live.size(), 3u);
    EXPECT_EQ(live[0].rhs, L"ABBA!");
    EXPECT_EQ(live[1].rhs, L"Abba");
    EXPECT_EQ(live[2].lhs, L"C");
}

TEST_F(OptionsSheet, AddDialogWaitsForATextToReplace)
{
    OnPage(kReplace, [](HWND page) { Click(page, IDC_ADD); });
    driver.Then([] {
        HWND dialog = FindDialog(L"Add Replacement");
        ASSERT_NE(dialog, nullptr);
        EXPECT_FALSE(IsEnabled(dialog, IDOK));
        Type(dialog, IDC_REPLACE_THIS, L"  \t ");
        EXPECT_FALSE(IsEnabled(dialog, IDOK)) << "blanks alone";
        Type(dialog, IDC_REPLACE_THIS, L" Sigur Ros ");
        EXPECT_TRUE(IsEnabled(dialog, IDOK));
        Click(dialog, IDOK); // "With" left empty
    });
    driver.Then([] {
        HWND page = CurrentPage(FindDialog(kSheet));
        EXPECT_EQ(Rows(page).back(), L" Sigur Ros >");
        EXPECT_EQ(Selected(page), 3);
        EXPECT_EQ(RowButtons(page), "1110");
    });
    PressOk();
    ASSERT_TRUE(Open());
    ASSERT_EQ(CurrentReplacements().size(), 4u);
    EXPECT_EQ(CurrentReplacements()[3].lhs, L" Sigur Ros ") << "taken as typed";
    EXPECT_TRUE(FileExists(ReplacementsFilePath()));
}

TEST_F(OptionsSheet, BuddyBoxEnablesTheHotKeyEditAtOnce)
{
    OnPage(kBuddy, [](HWND page) {
        EXPECT_FALSE(IsEnabled(page, IDC_BUDDY_HOTKEY));
        Click(page, IDC_BUDDY_ENABLED);
    });
    driver.Then([] {
        HWND page = CurrentPage(FindDialog(kSheet));
        EXPECT_TRUE(IsEnabled(page, IDC_BUDDY_HOTKEY));
        Click(page, IDC_BUDDY_ENABLED);
    });
    driver.Then([] { EXPECT_FALSE(IsEnabled(CurrentPage(FindDialog(kSheet)), IDC_BUDDY_HOTKEY)); });
    PressCancel();
    EXPECT_FALSE(Open());
}

TEST_F(OptionsSheet, LoggingButtonsOpenAnExistingFileOrWarn)
{
    StatusLog(0, L"a line, so that the status log exists");
    std::vector<std::wstring> opened;
    const ShellOpenHandler previous =
        SetShellOpenHandler([&opened, this](HWND openOwner, const std::wstring& file) {
            EXPECT_EQ(openOwner, owner);
            opened.push_back(file);
            return true;
        });
    OnPage(kLogging, [](HWND page) {
        Click(page, IDC_OPEN_STATUS_LOG);
        Click(page, IDC_OPEN_QUEUE_FILE);
    });
    PressCancel();
    Open();
    SetShellOpenHandler(previous);
    EXPECT_EQ(opened, std::vector<std::wstring>{StatusLogFile()->FileName()});
    EXPECT_EQ(MessageBoxes(), std::vector<std::wstring>{L"exclamation, OK: The filename '" +
                                                        QueueFilePath() + L"' does not exist!"});
}
