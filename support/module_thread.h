#pragma once
// Threads that this module starts. Each one holds a reference to the module
// (so the DLL can never be unloaded under it) and to the work it runs (so
// nothing it touches lives on another thread's stack), and is counted until
// it ends, so that the module can tell whether it may be unloaded. No thread
// of ours is ever killed: a thread that a waiting side gives up on is left
// to end by itself.

#include <windows.h>

#include <memory>

#include "support/win_handle.h"

namespace cvas
{

// What a module thread runs. The thread and whoever started it hold the work
// jointly; the last of them to let go deletes it.
class CThreadWork
{
public:
    virtual ~CThreadWork() = default;
    virtual void Run() = 0;
};

// Starts work->Run() on a new thread (the C runtime's thread start); an
// exception out of Run() ends the thread as a return does. Returns
// the thread's handle, or an empty one with error set when no thread could
// be started.
CHandle StartModuleThread(std::shared_ptr<CThreadWork> work, DWORD& error);

// How many threads started by StartModuleThread have not yet ended. A thread
// leaves the count just before it lets go of the module.
long LiveModuleThreads();

} // namespace cvas
