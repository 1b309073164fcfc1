#pragma once
// Runs a blocking WinINet call on a short-lived thread of its own while the
// calling thread keeps control: it waits for that thread, for the shutdown
// event or for a time-out, whichever comes first, and gives up on a thread
// that has not finished.

#include <windows.h>

namespace cvas
{

enum class CallEnd
{
    Finished, // the call returned
    Shutdown, // the shutdown event was set first
    TimedOut, // timeoutMs passed first
    NoThread, // the thread could not be created (error set)
};

// Starts work(argument) on a new thread and waits. A thread given up on is
// ended with TerminateThread, so work must keep everything it writes in
// argument, which the caller keeps alive, and allocate nothing of its own.
// The thread is gone when this returns.
CallEnd RunCancellableCall(LPTHREAD_START_ROUTINE work, void* argument, DWORD timeoutMs,
                           HANDLE shutdown, DWORD& error);

} // namespace cvas
