#pragma once
// The player's top-level window: the hosted control above, a status line
// with the current file and the simulated time below.

#include <windows.h>

#include <string>

#include "tools/player/control_host.h"

namespace cvas::player
{

class CMainWindow
{
public:
    CMainWindow() = default;
    CMainWindow(const CMainWindow&) = delete;
    CMainWindow& operator=(const CMainWindow&) = delete;

    bool Create(int width, int height, std::wstring& error);
    HWND Window() const { return m_window.Get(); }
    // The window that fills the area above the status line.
    void SetContent(HWND content);
    void SetStatus(const std::wstring& text);
    // The user asked to close the window; the scenario stops.
    bool CloseRequested() const { return m_closeRequested; }
    void Destroy();

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    void Layout();

    CWindow m_window;
    HWND m_status = nullptr; // a child: destroyed with the window
    HWND m_content = nullptr;
    std::wstring m_statusText;
    bool m_closeRequested = false;
};

} // namespace cvas::player
