// Pictures of the plug-in's windows as a user sees them: the plug-in's
// window with its Options button and a few submitted rows, every page of the
// options sheet filled with settings, the replacement dialog for Add and for
// Modify, the progress window of a fetch of buddies and the buddy dialog. Each dialog's layout is
// checked as it shows (texts that do not fit, controls across a frame, overlaps, the tab order).
//
// Usage: screenshots OUTDIR SUFFIX   (files are OUTDIR\NAME-SUFFIX.png)
// Exit code: 0 all saved and nothing found, 1 layout faults, 2 failures.

#include <windows.h>

#include <commctrl.h>
#include <shellapi.h>

#include <fcntl.h>
#include <io.h>

#include <string>
#include <vector>

#include "buddies/buddy_info.h"
#include "settings/live_settings.h"
#include "resources/resource_ids.h"
#include "scrobbler/queue/replacements_file.h"
#include "settings/data_folder.h"
#include "settings/ini_file.h"
#include "support/com_ptr.h"
#include "support/logs.h"
#include "support/message_box.h"
#include "tools/dialog_driver/dialog_driver.h"
#include "tools/dialog_layout/dialog_layout.h"
#include "tools/player/automation_objects.h"
#include "tools/player/output.h"
#include "tools/player/screenshot.h"
#include "buddies/dlg_buddies.h"
#include "ui/dlg_status.h"
#include "ui/options/open_options.h"
#include "ui/submitted_list.h"
#include "settings/log_settings.h"

using namespace cvas;
using namespace cvas::tools;

namespace
{

const std::wstring kSheet = L"Options for last.fm";
// The sheet's pages in their order, each with the template it is made from.
struct CPageSpec
{
    const wchar_t* name;
    int templateId;
};
constexpr CPageSpec kPages[] = {
    {L"options_main", IDD_OPTIONS_MAIN},       {L"options_logging", IDD_OPTIONS_LOGGING},
    {L"options_replace", IDD_OPTIONS_REPLACE}, {L"options_filter", IDD_OPTIONS_FILTER},
    {L"options_buddy", IDD_OPTIONS_BUDDY},     {L"options_advanced", IDD_OPTIONS_ADVANCED},
    {L"options_about", IDD_OPTIONS_ABOUT},
};

// Bound of the wait for a page to show, far beyond what a busy machine needs.
constexpr ULONGLONG kPageShowLimitMs = 20000;

struct CRun
{
    std::wstring folder;
    std::wstring suffix;
    bool failed = false;
    int faults = 0;
};

CRun g_run;

// What the thread has to handle, the window system's own events included,
// but for timer messages: the dialog driver's next step waits on one, and
// run from here it would take the picture's place.
void DrainMessagesButTimers()
{
    MSG message;
    for (int handled = 0; handled < 10000; ++handled)
    {
        if (!PeekMessageW(&message, nullptr, 0, WM_TIMER - 1, PM_REMOVE) &&
            !PeekMessageW(&message, nullptr, WM_TIMER + 1, 0xFFFF, PM_REMOVE))
            break;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

void Paint(HWND window)
{
    RedrawWindow(window, nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN | RDW_UPDATENOW);
    // Wine hands what was drawn to the screen while the thread waits.
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 100, QS_ALLINPUT);
    DrainMessagesButTimers();
}

// Whether the sheet shows the page at index: its tab is selected, the
// current page is that page's window, made from the page's own template, and
// it is visible.
bool ShowsPage(HWND sheet, int index)
{
    if (sheet == nullptr)
        return false;
    HWND page = CurrentPage(sheet);
    const auto shownTemplate = SendMessageW(sheet, PSM_INDEXTOID, index, 0);
    return TabCtrl_GetCurSel(PropSheet_GetTabControl(sheet)) == index && page != nullptr &&
           page == reinterpret_cast<HWND>(SendMessageW(sheet, PSM_INDEXTOHWND, index, 0)) &&
           shownTemplate == kPages[index].templateId && IsWindowVisible(page);
}

// Waits, within its bound, until the sheet shows the page at index.
bool WaitForPage(HWND sheet, int index)
{
    const ULONGLONG end = GetTickCount64() + kPageShowLimitMs;
    while (!ShowsPage(sheet, index))
    {
        if (GetTickCount64() >= end)
            return false;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
        DrainMessagesButTimers();
    }
    return true;
}

// Saves the window's picture; checks the layout of dialog (when given).
void Picture(HWND window, const std::wstring& name, HWND dialog)
{
    Paint(window);
    const std::wstring path = g_run.folder + L"\\" + name + L"-" + g_run.suffix + L".png";
    player::CPicture picture;
    if (window != nullptr && player::CaptureWindow(window, picture) &&
        player::SavePicture(path, picture))
    {
        player::WriteLine(L"saved " + path);
    }
    else
    {
        player::WriteError(L"the picture could not be taken or saved: " + path);
        g_run.failed = true;
    }
    if (dialog == nullptr)
        return;
    for (const std::wstring& fault : layout::CheckDialogLayout(dialog))
    {
        player::WriteLine(name + L": " + fault);
        ++g_run.faults;
    }
}

// Settings and replacements as a user might have them, in a data folder of
// this run's own.
void SetUpData()
{
    wchar_t temp[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, temp);
    const std::wstring root = std::wstring(temp) + L"cvas-screenshots\\";
    OverrideSpecialFolders(root + L"Documents", root + L"AppData");
    CreateFolderLevels(DataFolder());
    OpenLogs(CIni(SettingsFilePath()));
    StatusLog(0, L"Screenshots");
    CSettingsValues& values = Settings();
    values.Enabled = true;
    values.UserName = L"tester";
    values.Password = L"secret";
    values.ReattemptFailed = true;
    values.EnableBuddySystem = true;
    values.Filter = std::wstring(L"Filetype=[mp3],[ogg],[flac]\r\nRating=[>3]");
    SetCurrentReplacements({{L"ABBA", L"Abba"},
                            {L"Sigur Ros", L"Sigur R\u00F3s"},
                            {L"\u041A\u0438\u043D\u043E", L"Kino"}});
    // No box waits for a user: a message is only printed.
    SetMessageBoxHandler([](const std::wstring& text, const wchar_t*, unsigned) {
        player::WriteLine(L"message box: " + text);
        return IDOK;
    });
}

CTrackRecord Track(const wchar_t* artist, const wchar_t* album, const wchar_t* name,
                   const wchar_t* time)
{
    CTrackRecord record(artist, album, name, L"240", time, {});
    record.SetExtra(L"OK");
    return record;
}

// The plug-in's window as the player shows it: the Options button above the
// list of submitted tracks.
HWND ShowPluginWindow(CMySubmittedListCtrl& list)
{
    HWND frame = CreateWindowExW(0, WC_STATICW, L"", WS_POPUP | WS_BORDER | WS_CLIPCHILDREN, 16, 16,
                                 860, 220, nullptr, nullptr, nullptr, nullptr);
    CreateWindowExW(0, WC_BUTTONW, L"&Options", WS_CHILD | WS_VISIBLE, 0, 0, 160, 22, frame,
                    nullptr, nullptr, nullptr);
    list.Create(kSubmittedListStyle, RECT{0, 22, 858, 218}, frame, 1);
    const SYSTEMTIME submitted{2026, 11, 0, 23, 17, 6, 13, 0};
    list.AddSubmittedRow(
        true, Track(L"Bj\u00F6rk", L"Homogenic", L"J\u00F3ga", L"2026-11-23 17:05:53"), submitted);
    list.AddSubmittedRow(
        false,
        Track(L"\u041A\u0438\u043D\u043E",
              L"\u0413\u0440\u0443\u043F\u043F\u0430 \u043A\u0440\u043E\u0432\u0438",
              L"\u0413\u0440\u0443\u043F\u043F\u0430 \u043A\u0440\u043E\u0432\u0438",
              L"2026-11-23 17:05:59"),
        submitted);
    list.AddSubmittedRow(
        true, Track(L"Sigur R\u00F3s", L"Takk\u2026", L"Hopp\u00EDpolla", L"2026-11-23 17:06:13"),
        submitted);
    ShowWindow(frame, SW_SHOWNOACTIVATE);
    return frame;
}

// Every page in turn, then the Add and the Modify dialogs; then Cancel.
void PictureTheSheet(HWND owner)
{
    CDialogDriver driver;
    for (int page = 0; page < static_cast<int>(std::size(kPages)); ++page)
    {
        driver.Then([page] { SendMessageW(FindDialog(kSheet), PSM_SETCURSEL, page, 0); });
        driver.Then([page] {
            HWND sheet = FindDialog(kSheet);
            // The picture is named after the page it must show: it is taken,
            // and its layout checked, only once the sheet shows that page.
            if (!WaitForPage(sheet, page))
            {
                player::WriteError(std::wstring(L"the sheet does not show ") + kPages[page].name +
                                   L"; no picture taken");
                g_run.failed = true;
                return;
            }
            Picture(sheet, kPages[page].name, CurrentPage(sheet));
            if (!ShowsPage(sheet, page))
            {
                player::WriteError(std::wstring(L"the sheet left ") + kPages[page].name +
                                   L" while its picture was taken");
                g_run.failed = true;
            }
        });
    }
    driver.Then([] { SendMessageW(FindDialog(kSheet), PSM_SETCURSEL, 2, 0); });
    driver.Then([] { Click(CurrentPage(FindDialog(kSheet)), IDC_ADD); });
    driver.Then([] {
        HWND dialog = FindDialog(L"Add Replacement");
        ShowWindow(dialog, SW_SHOWNOACTIVATE);
        Type(dialog, IDC_REPLACE_THIS, L"The The");
        Picture(dialog, L"replacement_add", dialog);
        Click(dialog, IDCANCEL);
    });
    driver.Then([] { Click(CurrentPage(FindDialog(kSheet)), IDC_MODIFY); });
    driver.Then([] {
        HWND dialog = FindDialog(L"Modify Replacement");
        ShowWindow(dialog, SW_SHOWNOACTIVATE);
        Picture(dialog, L"replacement_modify", dialog);
        Click(dialog, IDCANCEL);
    });
    driver.Then([] { SendMessageW(FindDialog(kSheet), PSM_PRESSBUTTON, PSBTN_CANCEL, 0); });
    driver.Run([owner] { OpenOptionsSheet(owner, false, [](bool) {}); });
    if (!driver.Finished())
    {
        player::WriteError(L"the options sheet did not run its course");
        g_run.failed = true;
    }
}

std::wstring RecentTrack(const std::wstring& artist, const std::wstring& name, const wchar_t* uts)
{
    return L"<track><artist>" + artist + L"</artist><name>" + name +
           L"</name><url>http://example.invalid/</url><date uts=\"" + uts + L"\"/></track>";
}

// The progress window of a fetch, then the buddy dialog on a list of three
// friends, two of whose tracks are in the player's library.
void PictureTheBuddies(HWND owner)
{
    CDlgStatus progress;
    progress.Create(nullptr);
    progress.SetProgressText(L"Processing alice ...");
    Picture(progress.Window(), L"buddy_progress", progress.Window());
    progress.Destroy();

    player::CSharedPlayer library(player::CPlayerModel(
        {player::SongFile(1, L"Bj\u00F6rk - J\u00F3ga.mp3", L"Bj\u00F6rk", L"J\u00F3ga"),
         player::SongFile(2, L"Sigur R\u00F3s - Hopp\u00EDpolla.mp3", L"Sigur R\u00F3s",
                          L"Hopp\u00EDpolla")},
        {0}, [](double, const std::wstring&) {}));
    player::CRefLedger ledger;
    player::CAutomationContext context{library, ledger, false};
    const auto automation = CComPtr<IDispatch>::Adopt(player::CreateAutomation(context));
    auto list = std::make_shared<CBuddyInfo>();
    for (const wchar_t* name : {L"alice", L"bob", L"erin"})
    {
        list->buddies.push_back(std::make_shared<CBuddy>());
        list->buddies.back()->name = name;
    }
    list->buddies[0]->rawRecentTracks =
        L"<recenttracks user=\"alice\">" + RecentTrack(L"Bj\u00F6rk", L"J\u00F3ga", L"1700000000") +
        RecentTrack(L"\u041A\u0438\u043D\u043E",
                    L"\u0413\u0440\u0443\u043F\u043F\u0430 \u043A\u0440\u043E\u0432\u0438",
                    L"1699999700") +
        RecentTrack(L"Sigur R\u00F3s", L"Hopp\u00EDpolla", L"1699999400") +
        RecentTrack(L"The [Bracket] Band", L"Square &amp; Round", L"1699999100") +
        L"</recenttracks>";

    CDialogDriver driver;
    driver.Then([] { ShowWindow(FindDialog(L"Friend Information"), SW_SHOWNOACTIVATE); });
    driver.Then([] {
        HWND dialog = FindDialog(L"Friend Information");
        Picture(dialog, L"buddies", dialog);
        Click(dialog, IDOK);
    });
    driver.Run([&] {
        CDlgBuddies dialog(list, automation.Get(), owner);
        dialog.DoModal(owner);
    });
    if (!driver.Finished())
    {
        player::WriteError(L"the buddy dialog did not run its course");
        g_run.failed = true;
    }
}

} // namespace

int main()
{
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    int count = 0;
    LPWSTR* arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    if (arguments == nullptr || count != 3)
    {
        player::WriteError(L"usage: screenshots OUTDIR SUFFIX");
        return 2;
    }
    g_run.folder = arguments[1];
    g_run.suffix = arguments[2];
    LocalFree(arguments);

    // Laid out at the screen's own DPI, as a program that says it is aware of it.
    SetProcessDPIAware();
    INITCOMMONCONTROLSEX controls = {sizeof(controls), ICC_LISTVIEW_CLASSES | ICC_TAB_CLASSES};
    InitCommonControlsEx(&controls);
    SetUpData();

    CMySubmittedListCtrl list;
    HWND window = ShowPluginWindow(list);
    Picture(window, L"plugin_window", nullptr);
    PictureTheSheet(window);
    PictureTheBuddies(window);
    DestroyWindow(window);
    CloseLogs();

    player::WriteLine(std::to_wstring(g_run.faults) + L" layout faults");
    return g_run.failed ? 2 : g_run.faults != 0 ? 1 : 0;
}
