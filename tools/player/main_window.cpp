#include "tools/player/main_window.h"

namespace cvas::player
{

namespace
{

constexpr wchar_t kClassName[] = L"SimulatedPlayerWindow";
constexpr int kStatusHeight = 24;

} // namespace

bool CMainWindow::Create(int width, int height, std::wstring& error)
{
    const HINSTANCE instance = GetModuleHandleW(nullptr);
    WNDCLASSEXW windowClass = {};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = Procedure;
    windowClass.hInstance = instance;
    windowClass.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
    windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
    windowClass.lpszClassName = kClassName;
    if (RegisterClassExW(&windowClass) == 0 && GetLastError() != ERROR_CLASS_ALREADY_EXISTS)
    {
        error = L"the main window class was not registered";
        return false;
    }
    m_window = CWindow(CreateWindowExW(0, kClassName, L"Simulated player",
                                       WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, 16, 16, width, height,
                                       nullptr, nullptr, instance, this));
    if (!m_window)
    {
        error = L"the main window was not created";
        return false;
    }
    m_status = CreateWindowExW(
        0, L"STATIC", L"", WS_CHILD | WS_VISIBLE | SS_LEFTNOWORDWRAP | SS_CENTERIMAGE | SS_SUNKEN,
        0, 0, 0, 0, m_window.Get(), nullptr, instance, nullptr);
    SendMessageW(m_status, WM_SETFONT, reinterpret_cast<WPARAM>(GetStockObject(DEFAULT_GUI_FONT)),
                 FALSE);
    Layout();
    ShowWindow(m_window.Get(), SW_SHOWNORMAL);
    UpdateWindow(m_window.Get());
    return true;
}

void CMainWindow::SetContent(HWND content)
{
    m_content = content;
    Layout();
}

void CMainWindow::SetStatus(const std::wstring& text)
{
    if (text == m_statusText || m_status == nullptr)
        return;
    m_statusText = text;
    SetWindowTextW(m_status, (L" " + text).c_str());
}

void CMainWindow::Destroy()
{
    m_content = nullptr;
    m_status = nullptr;
    m_window.Reset();
}

void CMainWindow::Layout()
{
    if (!m_window)
        return;
    RECT area;
    GetClientRect(m_window.Get(), &area);
    const int statusTop = area.bottom > kStatusHeight ? area.bottom - kStatusHeight : 0;
    if (m_content != nullptr)
        MoveWindow(m_content, 0, 0, area.right, statusTop, TRUE);
    if (m_status != nullptr)
        MoveWindow(m_status, 0, statusTop, area.right, area.bottom - statusTop, TRUE);
}

LRESULT CALLBACK CMainWindow::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_NCCREATE)
    {
        const auto* create = reinterpret_cast<const CREATESTRUCTW*>(lParam);
        SetWindowLongPtrW(window, GWLP_USERDATA,
                          reinterpret_cast<LONG_PTR>(create->lpCreateParams));
    }
    auto* self = reinterpret_cast<CMainWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (self != nullptr)
    {
        switch (message)
        {
        case WM_SIZE:
            self->Layout();
            return 0;
        case WM_CLOSE:
            // The scenario ends the player; closing only asks it to stop.
            self->m_closeRequested = true;
            return 0;
        case WM_NCDESTROY:
            SetWindowLongPtrW(window, GWLP_USERDATA, 0);
            break;
        default:
            break;
        }
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

} // namespace cvas::player
