#include "support/module_thread.h"

#include "support/callback_boundary.h"
#include "support/this_module.h"

#include <process.h>

#include <atomic>

namespace cvas
{
namespace
{

std::atomic<long> g_liveThreads{0};

// Handed to the new thread, which owns it from then on.
struct CThreadStart
{
    std::shared_ptr<CThreadWork> work;
    HMODULE module = nullptr;
};

unsigned __stdcall ModuleThread(void* argument)
{
    HMODULE module = nullptr;
    // Work that throws ends its thread as work that returns does: the count
    // goes down and the module is let go.
    GuardThreadProcedure(L"module thread", [&] {
        const std::unique_ptr<CThreadStart> start(static_cast<CThreadStart*>(argument));
        module = start->module;
        start->work->Run();
    }); // the work goes here, while the module's code is still there to run its destructor
    --g_liveThreads;
    // The thread's last reference to the module goes with the thread itself,
    // so no code of ours runs after the module may have been unloaded. The C
    // runtime is a DLL here and frees its per-thread data when the thread
    // ends, so leaving without _endthreadex loses nothing.
    if (module != nullptr)
        FreeLibraryAndExitThread(module, 0);
    return 0;
}

} // namespace

CHandle StartModuleThread(std::shared_ptr<CThreadWork> work, DWORD& error)
{
    auto start = std::make_unique<CThreadStart>();
    start->work = std::move(work);
    start->module = ReferenceThisModule();
    ++g_liveThreads;
    const uintptr_t thread = _beginthreadex(nullptr, 0, &ModuleThread, start.get(), 0, nullptr);
    if (thread == 0)
    {
        error = GetLastError();
        --g_liveThreads;
        if (start->module != nullptr)
            FreeLibrary(start->module);
        return CHandle();
    }
    start.release(); // the thread owns it now
    return CHandle(reinterpret_cast<HANDLE>(thread));
}

long LiveModuleThreads()
{
    return g_liveThreads.load();
}

} // namespace cvas
