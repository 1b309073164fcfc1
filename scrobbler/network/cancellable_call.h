#pragma once
// Runs a blocking WinINet call on a module thread of its own while the
// calling thread keeps control: it waits for that thread, for the shutdown
// event or for a time-out, whichever comes first, handling its messages
// meanwhile when the caller asks for it (a thread with windows). A thread
// that has not finished is given up on, never killed: the waiting side
// closes the WinINet handles it uses (on Windows that aborts the blocked
// call) and goes on, while the thread ends by itself, within WinINet's own
// time-outs at most.

#include <windows.h>

#include <memory>

#include "support/message_wait.h"
#include "support/module_thread.h"

namespace cvas
{

// A call that can be given up on. Everything the call touches belongs to the
// work object, which the thread holds too.
class CCancellableWork : public CThreadWork
{
public:
    // Called on the waiting side when it stops waiting for Run().
    virtual void GiveUp() = 0;
};

enum class CallEnd
{
    Finished, // the call returned
    Shutdown, // the shutdown event was set first
    TimedOut, // timeoutMs passed first
    NoThread, // the thread could not be created (error set)
};

// Starts work on a new thread and waits. Only after Finished has the work's
// thread finished with it.
CallEnd RunCancellableCall(const std::shared_ptr<CCancellableWork>& work, DWORD timeoutMs,
                           HANDLE shutdown, WaitKind wait, DWORD& error);

} // namespace cvas
