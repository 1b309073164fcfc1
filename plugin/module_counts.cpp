#include "plugin/module_counts.h"

#include "support/module_thread.h"

#include <atomic>

namespace cvas
{
namespace
{

std::atomic<long> g_objects{0};
std::atomic<long> g_locks{0};

} // namespace

void AddModuleObject()
{
    ++g_objects;
}

void ReleaseModuleObject()
{
    --g_objects;
}

void LockModule(bool lock)
{
    if (lock)
        ++g_locks;
    else
        --g_locks;
}

bool IsModuleInUse()
{
    return g_objects != 0 || g_locks != 0 || LiveModuleThreads() != 0;
}

} // namespace cvas
