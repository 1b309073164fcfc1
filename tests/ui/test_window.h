#pragma once
// Hidden top-level windows for the tests that need real ones (under Xvfb).

#include <windows.h>

namespace cvas::test
{

// A window of its own class className, whose messages go to procedure.
HWND CreateTestWindow(const wchar_t* className, WNDPROC procedure = DefWindowProcW);

// Waits, at most waitMs, for the WM_TIMER of timerId on window and dispatches
// it. Returns whether it came.
bool DispatchTimer(HWND window, UINT_PTR timerId, DWORD waitMs);

} // namespace cvas::test
