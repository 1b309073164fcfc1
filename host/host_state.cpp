#include "host/host_state.h"

#include <atomic>

namespace cvas
{
namespace
{

// A plain pointer, so that nothing releases it when the module unloads:
// Terminate lets go of it, on the player's UI thread.
IDispatch* g_automation = nullptr;
std::atomic<bool> g_terminating{false};
std::atomic<bool> g_scrobblingEnabled{false};

} // namespace

CCriticalSection& HostLock()
{
    static CCriticalSection lock;
    return lock;
}

IDispatch* HostAutomation()
{
    return g_automation;
}

void SetHostAutomation(IDispatch* automation)
{
    if (automation != nullptr)
        automation->AddRef();
    if (g_automation != nullptr)
        g_automation->Release();
    g_automation = automation;
}

bool IsTerminating()
{
    return g_terminating;
}

void SetTerminating(bool terminating)
{
    g_terminating = terminating;
}

bool IsScrobblingEnabled()
{
    return g_scrobblingEnabled;
}

void SetScrobblingEnabledFlag(bool enabled)
{
    g_scrobblingEnabled = enabled;
}

} // namespace cvas
