#include "plugin/control_window.h"

#include "host/play_request.h"
#include "plugin/module_state.h"
#include "plugin/plugin_lifecycle.h"
#include "plugin/window_messages.h"
#include "support/callback_boundary.h"
#include "support/hot_keys.h"
#include "support/this_module.h"
#include "ui/options/open_options.h"
#include "ui/submitted_list.h"
#include "ui/submitted_rows.h"

namespace cvas
{
namespace
{

constexpr wchar_t kWindowClass[] = L"CVAudioScrobblerControl";
constexpr RECT kOptionsButtonRect{0, 0, 160, 22};

// What the window holds besides its children: the list of submitted tracks
// with its image list. Made at WM_CREATE and freed at WM_DESTROY, so that
// nothing of it is left for the module's unloading.
struct CControlParts
{
    CMySubmittedListCtrl submittedList;
};

CControlParts* PartsOf(HWND window)
{
    return reinterpret_cast<CControlParts*>(GetWindowLongPtrW(window, GWLP_USERDATA));
}

void LayOut(HWND window, int width, int height)
{
    HWND button = GetDlgItem(window, kOptionsButtonId);
    HWND list = GetDlgItem(window, kSubmittedListId);
    int buttonHeight = 0;
    if (button != nullptr)
    {
        RECT rect{};
        GetWindowRect(button, &rect);
        buttonHeight = rect.bottom - rect.top;
        SetWindowPos(button, nullptr, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
    if (list != nullptr)
        MoveWindow(list, 0, buttonHeight, width, height - buttonHeight, TRUE);
}

LRESULT HandleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message)
    {
    case WM_CREATE:
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(new CControlParts));
        AcceptSubmittedRows(window);
        SetPluginWindow(window);
        return 0;
    case WM_SIZE:
        if (LOWORD(lParam) != 0 && HIWORD(lParam) != 0)
            LayOut(window, LOWORD(lParam), HIWORD(lParam));
        return 0;
    case WM_COMMAND:
        if (LOWORD(wParam) == kOptionsButtonId)
            OpenOptions(false);
        return 0;
    case kOpenOptionsMessage:
        OpenOptions(wParam != 0);
        return 0;
    case kSubmittedRowMessage:
        OnSubmittedRowMessage(
            PartsOf(window) != nullptr ? &PartsOf(window)->submittedList : nullptr, wParam, lParam);
        return 0;
    case WM_TIMER:
        if (wParam != kSubmittedRowTimerId)
            return DefWindowProcW(window, message, wParam, lParam);
        OnSubmittedRowTimer(PartsOf(window) != nullptr ? &PartsOf(window)->submittedList : nullptr,
                            window);
        return 0;
    case kPlayRequestMessage:
        PlayLibraryFile(static_cast<int>(wParam));
        return 0;
    case WM_HOTKEY:
        OnHotKey(wParam);
        return 0;
    case WM_DESTROY:
        EndSubmittedRows(window);
        delete PartsOf(window);
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        if (PluginWindow() == window)
            SetPluginWindow(nullptr);
        return 0;
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

// Every message this window handles answers 0, one whose handling threw too.
LRESULT CALLBACK ControlWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    return GuardWindowProcedure(L"control window", 0,
                                [&] { return HandleMessage(window, message, wParam, lParam); });
}

bool RegisterWindowClass()
{
    static const bool registered = [] {
        WNDCLASSEXW windowClass{};
        windowClass.cbSize = sizeof windowClass;
        windowClass.lpfnWndProc = &ControlWindowProc;
        windowClass.hInstance = ThisModule();
        windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
        windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
        windowClass.lpszClassName = kWindowClass;
        return RegisterClassExW(&windowClass) != 0 || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
    }();
    return registered;
}

} // namespace

HWND CreateControlWindow(HWND parent, const RECT& position)
{
    if (!RegisterWindowClass())
        return nullptr;
    return CreateWindowExW(0, kWindowClass, L"", WS_CHILD | WS_CLIPCHILDREN, position.left,
                           position.top, position.right - position.left,
                           position.bottom - position.top, parent, nullptr, ThisModule(), nullptr);
}

void CreateChildWindows(HWND window)
{
    // A later Init on the same window finds them made.
    if (GetDlgItem(window, kOptionsButtonId) != nullptr)
        return;
    CreateWindowExW(0, WC_BUTTONW, L"&Options", WS_CHILD | WS_VISIBLE, kOptionsButtonRect.left,
                    kOptionsButtonRect.top, kOptionsButtonRect.right, kOptionsButtonRect.bottom,
                    window, reinterpret_cast<HMENU>(static_cast<UINT_PTR>(kOptionsButtonId)),
                    ThisModule(), nullptr);
    RECT client{};
    GetClientRect(window, &client);
    if (CControlParts* parts = PartsOf(window))
        parts->submittedList.Create(kSubmittedListStyle, client, window, kSubmittedListId);
    LayOut(window, client.right, client.bottom);
}

void OpenOptions(bool firstStart)
{
    OpenOptionsSheet(PluginWindow(), firstStart, &SetScrobblingEnabled);
}

} // namespace cvas
