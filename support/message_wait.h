#pragma once
// Waits for handles on a thread that may own windows. Windows takes a window
// whose thread handles no messages for 5 seconds as not responding: it
// paints a ghost in its place, and Esc and the close box do nothing. A
// thread with windows therefore handles its messages while it waits; a
// thread without any needs no more than a plain wait. The caller says which.

#include <windows.h>

namespace cvas
{

enum class WaitKind
{
    Plain,        // nothing but the wait
    PumpMessages, // the thread's messages are handled while it waits
};

// WaitForMultipleObjects(count, handles, FALSE, timeoutMs), with the same
// results and the same time-out. With PumpMessages the messages that arrive
// meanwhile are dispatched, a dialog's through IsDialogMessage (so that Esc
// reaches it); a WM_QUIT ends the pumping, is posted again when the wait is
// over, and the rest of the wait is a plain one.
DWORD WaitForAny(const HANDLE* handles, DWORD count, DWORD timeoutMs, WaitKind kind);

} // namespace cvas
