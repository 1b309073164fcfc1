#include "support/message_wait.h"

namespace cvas
{
namespace
{

// What is left of timeoutMs, counted from start.
DWORD TimeLeft(ULONGLONG start, DWORD timeoutMs)
{
    if (timeoutMs == INFINITE)
        return INFINITE;
    const ULONGLONG passed = GetTickCount64() - start;
    return passed >= timeoutMs ? 0 : static_cast<DWORD>(timeoutMs - passed);
}

bool IsDialog(HWND window)
{
    wchar_t name[8] = {};
    return GetClassNameW(window, name, 8) != 0 && lstrcmpW(name, L"#32770") == 0;
}

// Dispatches the messages in the queue; false at a WM_QUIT, taken from the
// queue with its exit code in quitCode.
bool DispatchWaitingMessages(WPARAM& quitCode)
{
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
    {
        if (message.message == WM_QUIT)
        {
            quitCode = message.wParam;
            return false;
        }
        HWND top = message.hwnd != nullptr ? GetAncestor(message.hwnd, GA_ROOT) : nullptr;
        if (top != nullptr && IsDialog(top) && IsDialogMessageW(top, &message))
            continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return true;
}

} // namespace

DWORD WaitForAny(const HANDLE* handles, DWORD count, DWORD timeoutMs, WaitKind kind)
{
    if (kind == WaitKind::Plain)
        return WaitForMultipleObjects(count, handles, FALSE, timeoutMs);
    const ULONGLONG start = GetTickCount64();
    for (;;)
    {
        // MWMO_INPUTAVAILABLE: messages that came before the wait count too.
        const DWORD result = MsgWaitForMultipleObjectsEx(count, handles, TimeLeft(start, timeoutMs),
                                                         QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        if (result != WAIT_OBJECT_0 + count)
            return result;
        WPARAM quitCode = 0;
        if (!DispatchWaitingMessages(quitCode))
        {
            // The quit is for the loop that runs this thread, once the wait
            // is over; until then the thread takes no more messages.
            const DWORD end =
                WaitForMultipleObjects(count, handles, FALSE, TimeLeft(start, timeoutMs));
            PostQuitMessage(static_cast<int>(quitCode));
            return end;
        }
    }
}

} // namespace cvas
