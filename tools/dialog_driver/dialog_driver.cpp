#include "tools/dialog_driver/dialog_driver.h"

#include <commctrl.h>

namespace cvas::tools
{
namespace
{

constexpr UINT kTickMs = 20;
// Ticks that the dialogs get to close after the last step.
constexpr int kClosingTicks = 250;

CDialogDriver* g_driver = nullptr;

struct CSearch
{
    const std::wstring* caption;
    HWND found;
};

BOOL CALLBACK VisitThreadWindow(HWND window, LPARAM search)
{
    auto& wanted = *reinterpret_cast<CSearch*>(search);
    wchar_t caption[256] = {};
    GetWindowTextW(window, caption, 256);
    // A modal dialog shows itself only once its loop is idle: a step may
    // meet it still hidden.
    if (*wanted.caption == caption)
    {
        wanted.found = window;
        return FALSE;
    }
    return TRUE;
}

BOOL CALLBACK CancelIfDialog(HWND window, LPARAM)
{
    wchar_t className[16] = {};
    GetClassNameW(window, className, 16);
    if (IsWindowVisible(window) && std::wstring(className) == L"#32770")
        PostMessageW(window, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
    return TRUE;
}

// Cancels every visible dialog of this thread.
void CancelOpenDialogs()
{
    EnumThreadWindows(GetCurrentThreadId(), &CancelIfDialog, 0);
}

POINT RowPoint(HWND list, int row)
{
    RECT rect{};
    ListView_GetItemRect(list, row, &rect, LVIR_LABEL);
    return {rect.left + 4, (rect.top + rect.bottom) / 2};
}

void PostMouse(HWND list, UINT message, WPARAM keys, POINT point)
{
    PostMessageW(list, message, keys, MAKELPARAM(point.x, point.y));
}

void ClickAt(HWND list, POINT point, bool twice)
{
    PostMouse(list, WM_LBUTTONDOWN, MK_LBUTTON, point);
    PostMouse(list, WM_LBUTTONUP, 0, point);
    if (twice)
    {
        PostMouse(list, WM_LBUTTONDBLCLK, MK_LBUTTON, point);
        PostMouse(list, WM_LBUTTONUP, 0, point);
    }
}

} // namespace

bool CDialogDriver::Run(const std::function<void()>& open)
{
    g_driver = this;
    m_next = 0;
    m_idleTicks = 0;
    m_cancelled = false;
    const UINT_PTR timer = SetTimer(nullptr, 0, kTickMs, &Tick);
    open();
    KillTimer(nullptr, timer);
    g_driver = nullptr;
    // Timer messages still queued belong to no one now.
    MSG message;
    while (PeekMessageW(&message, nullptr, WM_TIMER, WM_TIMER, PM_REMOVE))
    {
    }
    return Finished();
}

void CALLBACK CDialogDriver::Tick(HWND, UINT, UINT_PTR, DWORD)
{
    CDialogDriver* driver = g_driver;
    if (driver == nullptr)
        return;
    if (driver->m_next < driver->m_steps.size())
    {
        // Taken before it runs: a step that opens a nested modal loop lets
        // the next tick run the next step inside it.
        const Step& step = driver->m_steps[driver->m_next++];
        step();
        return;
    }
    if (++driver->m_idleTicks > kClosingTicks)
    {
        driver->m_cancelled = true;
        CancelOpenDialogs();
    }
}

HWND FindDialog(const std::wstring& caption)
{
    CSearch search{&caption, nullptr};
    EnumThreadWindows(GetCurrentThreadId(), &VisitThreadWindow, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

HWND CurrentPage(HWND sheet)
{
    return reinterpret_cast<HWND>(SendMessageW(sheet, PSM_GETCURRENTPAGEHWND, 0, 0));
}

int CurrentPageIndex(HWND sheet)
{
    return static_cast<int>(
        SendMessageW(sheet, PSM_HWNDTOINDEX, reinterpret_cast<WPARAM>(CurrentPage(sheet)), 0));
}

void Click(HWND dialog, int id)
{
    PostMessageW(GetDlgItem(dialog, id), BM_CLICK, 0, 0);
}

void Type(HWND dialog, int id, const std::wstring& text)
{
    SetDlgItemTextW(dialog, id, text.c_str());
}

std::wstring TextOf(HWND dialog, int id)
{
    wchar_t text[1024] = {};
    GetDlgItemTextW(dialog, id, text, 1024);
    return text;
}

bool IsEnabled(HWND dialog, int id)
{
    return IsWindowEnabled(GetDlgItem(dialog, id)) != FALSE;
}

bool IsChecked(HWND dialog, int id)
{
    return IsDlgButtonChecked(dialog, id) == BST_CHECKED;
}

void ClickRow(HWND list, int row, bool twice)
{
    ClickAt(list, RowPoint(list, row), twice);
}

void ClickBelowRows(HWND list)
{
    RECT client{};
    GetClientRect(list, &client);
    ClickAt(list, {client.right / 2, client.bottom - 4}, false);
}

} // namespace cvas::tools
