#include "plugin/module_state.h"

#include "support/com_ptr.h"

#include <atomic>

namespace cvas
{
namespace
{

CComPtr<IDispatch> g_automation;
HWND g_window = nullptr;
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
    return g_automation.Get();
}

void SetHostAutomation(IDispatch* automation)
{
    g_automation = CComPtr<IDispatch>(automation);
}

HWND PluginWindow()
{
    return g_window;
}

void SetPluginWindow(HWND window)
{
    g_window = window;
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

CSettingsValues& Settings()
{
    static CSettingsValues values;
    return values;
}

} // namespace cvas
