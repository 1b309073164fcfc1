#include "ui/test_window.h"

namespace cvas::test
{

HWND CreateTestWindow(const wchar_t* className, WNDPROC procedure)
{
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = className;
    RegisterClassW(&windowClass); // fails harmlessly when already there
    return CreateWindowW(className, L"", WS_OVERLAPPEDWINDOW, 0, 0, 1200, 400, nullptr, nullptr,
                         GetModuleHandleW(nullptr), nullptr);
}

bool DispatchTimer(HWND window, UINT_PTR timerId, DWORD waitMs)
{
    const ULONGLONG end = GetTickCount64() + waitMs;
    for (;;)
    {
        MSG message;
        while (PeekMessageW(&message, window, WM_TIMER, WM_TIMER, PM_REMOVE))
        {
            DispatchMessageW(&message);
            if (message.wParam == timerId)
                return true;
        }
        const ULONGLONG now = GetTickCount64();
        if (now >= end)
            return false;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(end - now), QS_TIMER);
    }
}

} // namespace cvas::test
