#include "scrobbler/queue/engine_state.h"

#include "support/logs.h"
#include "support/win_handle.h"

#include <cstdint>

namespace cvas
{
namespace
{

CHandle g_eventShutdown;
CHandle g_eventData;

// The handles as the start-up line has always shown them: 32 bits of hex.
unsigned HandleNumber(HANDLE handle)
{
    return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(handle));
}

} // namespace

bool CreateEngineEvents()
{
    g_eventShutdown = CHandle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    g_eventData = CHandle(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    StatusLog(1, L"Created EventShutdown=0x%x   EventData=0x%x",
              HandleNumber(g_eventShutdown.Get()), HandleNumber(g_eventData.Get()));
    return g_eventShutdown && g_eventData;
}

void CloseEngineEvents()
{
    g_eventShutdown.Reset();
    g_eventData.Reset();
}

HANDLE EventShutdown()
{
    return g_eventShutdown.Get();
}

HANDLE EventData()
{
    return g_eventData.Get();
}

CCriticalSection& QueueLock()
{
    static CCriticalSection lock;
    return lock;
}

} // namespace cvas
