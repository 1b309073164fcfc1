#include "tools/player/watchdog.h"

#include <string>

#include "tools/player/output.h"

namespace cvas::player
{

CWatchdog::CWatchdog(DWORD milliseconds)
    : m_milliseconds(milliseconds), m_stop(CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
    m_thread = CHandle(CreateThread(nullptr, 0, Watch, this, 0, nullptr));
}

CWatchdog::~CWatchdog()
{
    SetEvent(m_stop.Get());
    if (m_thread)
        WaitForSingleObject(m_thread.Get(), INFINITE);
}

DWORD WINAPI CWatchdog::Watch(void* self)
{
    auto* watchdog = static_cast<CWatchdog*>(self);
    if (WaitForSingleObject(watchdog->m_stop.Get(), watchdog->m_milliseconds) != WAIT_TIMEOUT)
        return 0;
    WriteError(L"the run is stuck (" + std::wstring(watchdog->m_phase.load()) +
               L") long past its time limit; the process is ended");
    TerminateProcess(GetCurrentProcess(), 4);
    return 0;
}

} // namespace cvas::player
