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

} // namespace cvas::test
