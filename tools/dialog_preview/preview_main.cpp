// Shows each dialog template of the options sheet and of the replacement
// dialog on the screen, saves a picture of each in a folder and reports what
// the layout check finds. A tool for laying out the templates; the pages are
// empty apart from what the templates hold, the button images and the About
// page's fonts and texts, set here as the page sets them.
//
// Usage: dialog_preview OUTDIR
// Exit code: 0 all saved and nothing found, 1 faults found, 2 failures.

#include <windows.h>

#include <commctrl.h>
#include <shellapi.h>
#include <winver.h>

#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <string>
#include <vector>

#include "resources/resource_ids.h"
#include "tools/dialog_preview/dialog_layout.h"
#include "tools/player/output.h"
#include "tools/player/screenshot.h"

using namespace cvas;

namespace
{

struct CTemplate
{
    int id;
    const wchar_t* file;
    bool page;
};

const CTemplate kTemplates[] = {
    {IDD_OPTIONS_MAIN, L"main", true},       {IDD_OPTIONS_LOGGING, L"logging", true},
    {IDD_OPTIONS_REPLACE, L"replace", true}, {IDD_OPTIONS_FILTER, L"filter", true},
    {IDD_OPTIONS_BUDDY, L"buddy", true},     {IDD_OPTIONS_ADVANCED, L"advanced", true},
    {IDD_OPTIONS_ABOUT, L"about", true},     {IDD_REPLACEMENT, L"replacement", false},
};

const wchar_t kFrameClass[] = L"CvasDialogPreviewFrame";
const int kLeft = 16;
const int kTop = 16;

INT_PTR CALLBACK QuietDialogProc(HWND, UINT, WPARAM, LPARAM)
{
    return FALSE;
}

int ScreenDpi()
{
    HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    return dpi;
}

// The GDI objects and icons that a shown dialog uses, released after it.
struct CDialogExtras
{
    std::vector<HGDIOBJ> fonts;
    std::vector<HICON> icons;
    ~CDialogExtras()
    {
        for (HGDIOBJ font : fonts)
            DeleteObject(font);
        for (HICON icon : icons)
            DestroyIcon(icon);
    }
};

void SetButtonIcon(HWND dialog, int button, int icon, CDialogExtras& extras)
{
    HWND window = GetDlgItem(dialog, button);
    if (window == nullptr)
        return;
    const int size = GetSystemMetrics(SM_CXSMICON);
    HICON image = static_cast<HICON>(
        LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(icon), IMAGE_ICON, size, size, 0));
    if (image == nullptr)
        return;
    extras.icons.push_back(image);
    SendMessageW(window, BM_SETIMAGE, IMAGE_ICON, reinterpret_cast<LPARAM>(image));
}

std::wstring VersionValue(const std::vector<BYTE>& block, const wchar_t* name)
{
    wchar_t* value = nullptr;
    UINT length = 0;
    const std::wstring path = std::wstring(L"\\StringFileInfo\\040904b0\\") + name;
    if (!VerQueryValueW(block.data(), path.c_str(), reinterpret_cast<void**>(&value), &length) ||
        value == nullptr)
        return L"";
    return value;
}

// The About page's labels as the page fills them: the texts from the version
// block, each in the dialog's face at its own pixel size for 96 DPI.
void DressAboutPage(HWND page, CDialogExtras& extras)
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    DWORD ignored = 0;
    std::vector<BYTE> block(GetFileVersionInfoSizeW(path, &ignored));
    if (block.empty() ||
        !GetFileVersionInfoW(path, 0, static_cast<DWORD>(block.size()), block.data()))
        return;
    SetDlgItemTextW(page, IDC_ABOUT_VERSION,
                    (L"Version: " + VersionValue(block, L"FileVersion")).c_str());
    SetDlgItemTextW(page, IDC_ABOUT_LEGAL, VersionValue(block, L"LegalCopyright").c_str());
    SetDlgItemTextW(page, IDC_ABOUT_COMMENTS, VersionValue(block, L"Comments").c_str());

    LOGFONTW face = {};
    GetObjectW(reinterpret_cast<HGDIOBJ>(SendMessageW(page, WM_GETFONT, 0, 0)), sizeof(face),
               &face);
    const struct
    {
        int id;
        int pixels;
        int weight;
    } labels[] = {{IDC_ABOUT_TITLE, 26, FW_BOLD},
                  {IDC_ABOUT_VERSION, 18, FW_NORMAL},
                  {IDC_ABOUT_LEGAL, 9, FW_NORMAL},
                  {IDC_ABOUT_COMMENTS, 12, FW_NORMAL}};
    for (const auto& label : labels)
    {
        LOGFONTW font = face;
        font.lfHeight = -MulDiv(label.pixels, ScreenDpi(), 96);
        font.lfWidth = 0;
        font.lfWeight = label.weight;
        HFONT made = CreateFontIndirectW(&font);
        if (made == nullptr)
            continue;
        extras.fonts.push_back(made);
        SendMessageW(GetDlgItem(page, label.id), WM_SETFONT, reinterpret_cast<WPARAM>(made), TRUE);
    }
}

void DrainMessages()
{
    MSG message;
    for (int handled = 0; handled < 10000 && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);
         ++handled)
    {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

// Shows one template, saves its picture and reports the layout's faults.
// Returns false when the dialog could not be made or its picture saved.
bool Preview(const CTemplate& item, const std::wstring& folder, int& faultCount)
{
    HINSTANCE module = GetModuleHandleW(nullptr);
    CDialogExtras extras;
    HWND shown = nullptr;  // the window pictured
    HWND dialog = nullptr; // the dialog itself
    if (item.page)
    {
        shown = CreateWindowExW(0, kFrameClass, L"", WS_POPUP | WS_CAPTION | WS_SYSMENU, kLeft,
                                kTop, 100, 100, nullptr, nullptr, module, nullptr);
        dialog = shown != nullptr
                     ? preview::CreatePageInside(module, item.id, shown, QuietDialogProc)
                     : nullptr;
        if (dialog != nullptr)
        {
            // The frame is titled with the page's caption and fits the page.
            wchar_t caption[64] = {};
            RECT page;
            GetWindowRect(dialog, &page);
            OffsetRect(&page, -page.left, -page.top);
            AdjustWindowRectEx(&page, WS_POPUP | WS_CAPTION | WS_SYSMENU, FALSE, 0);
            SetWindowPos(shown, nullptr, kLeft, kTop, page.right - page.left,
                         page.bottom - page.top, SWP_NOZORDER | SWP_NOACTIVATE);
            SetWindowPos(dialog, nullptr, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
            GetWindowTextW(dialog, caption, 64);
            SetWindowTextW(shown, caption);
        }
    }
    else
    {
        shown = dialog =
            CreateDialogParamW(module, MAKEINTRESOURCEW(item.id), nullptr, QuietDialogProc, 0);
        if (dialog != nullptr)
            SetWindowPos(dialog, nullptr, kLeft, kTop, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    }
    if (dialog == nullptr)
    {
        player::WriteError(L"template " + std::to_wstring(item.id) + L" could not be shown");
        if (shown != nullptr)
            DestroyWindow(shown);
        return false;
    }
    SetButtonIcon(dialog, IDC_OPEN_QUEUE_FILE, IDI_OPEN_FILE, extras);
    SetButtonIcon(dialog, IDC_OPEN_FAILED_LOG, IDI_OPEN_FILE, extras);
    SetButtonIcon(dialog, IDC_OPEN_STATUS_LOG, IDI_OPEN_FILE, extras);
    SetButtonIcon(dialog, IDC_MOVE_UP, IDI_MOVE_UP, extras);
    SetButtonIcon(dialog, IDC_MOVE_DOWN, IDI_MOVE_DOWN, extras);
    if (item.id == IDD_OPTIONS_ABOUT)
        DressAboutPage(dialog, extras);

    ShowWindow(shown, SW_SHOWNOACTIVATE);
    RedrawWindow(shown, nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN | RDW_UPDATENOW);
    DrainMessages();

    const std::wstring path = folder + L"\\" + item.file + L".png";
    player::CPicture picture;
    const bool saved = player::CaptureWindow(shown, picture) && player::SavePicture(path, picture);
    if (saved)
        player::WriteLine(L"saved " + path);
    else
        player::WriteError(L"the picture could not be taken or saved: " + path);
    for (const std::wstring& fault : preview::CheckDialogLayout(dialog))
    {
        player::WriteLine(std::wstring(item.file) + L": " + fault);
        ++faultCount;
    }
    DestroyWindow(shown);
    DrainMessages();
    return saved;
}

} // namespace

int main()
{
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    int count = 0;
    LPWSTR* arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    if (arguments == nullptr || count != 2)
    {
        player::WriteError(L"usage: dialog_preview OUTDIR");
        return 2;
    }
    const std::wstring folder = arguments[1];
    LocalFree(arguments);

    // Laid out at the screen's own DPI, as a program that says it is aware of it.
    SetProcessDPIAware();
    INITCOMMONCONTROLSEX controls = {sizeof(controls), ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&controls);
    WNDCLASSEXW frame = {};
    frame.cbSize = sizeof(frame);
    frame.lpfnWndProc = DefWindowProcW;
    frame.hInstance = GetModuleHandleW(nullptr);
    frame.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));
    frame.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
    frame.lpszClassName = kFrameClass;
    if (!RegisterClassExW(&frame))
    {
        player::WriteError(L"the frame's window class could not be registered");
        return 2;
    }
    player::WriteLine(L"screen: " + std::to_wstring(ScreenDpi()) + L" DPI");

    bool allSaved = true;
    int faults = 0;
    for (const CTemplate& item : kTemplates)
        allSaved = Preview(item, folder, faults) && allSaved;
    player::WriteLine(std::to_wstring(faults) + L" layout faults");
    return !allSaved ? 2 : faults != 0 ? 1 : 0;
}
