#pragma once
// Plays the user in front of the player: a message box that the hosted
// control shows is reported and, after a moment, closed with its default
// button; any other dialog window of the control's (its options, say) is
// reported by its caption and cancelled. A control that warns or asks never
// leaves the player waiting.

#include <windows.h>

#include <functional>
#include <set>
#include <string>

#include "support/win_handle.h"

namespace cvas::player
{

class CMessageBoxCloser
{
public:
    using Reporter = std::function<void(const std::wstring&)>;

    explicit CMessageBoxCloser(Reporter report);
    ~CMessageBoxCloser();
    CMessageBoxCloser(const CMessageBoxCloser&) = delete;
    CMessageBoxCloser& operator=(const CMessageBoxCloser&) = delete;

private:
    static DWORD WINAPI Watch(void* self);
    static BOOL CALLBACK VisitWindow(HWND window, LPARAM self);
    void CloseIfMessageBox(HWND window);

    Reporter m_report;
    std::set<HWND> m_closing; // boxes already reported, on the watching thread only
    CHandle m_stop;
    CHandle m_thread;
};

} // namespace cvas::player
