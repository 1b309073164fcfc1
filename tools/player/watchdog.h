#pragma once
// Ends the process when a run overstays its time by far: a control that
// blocks the player's thread (in a call or a modal box nobody closes) would
// otherwise keep the player forever.

#include <windows.h>

#include <atomic>

#include "support/win_handle.h"

namespace cvas::player
{

class CWatchdog
{
public:
    explicit CWatchdog(DWORD milliseconds);
    ~CWatchdog();
    CWatchdog(const CWatchdog&) = delete;
    CWatchdog& operator=(const CWatchdog&) = delete;

    // What the player is doing, for the message when the time runs out.
    void SetPhase(const wchar_t* phase) { m_phase = phase; }

private:
    static DWORD WINAPI Watch(void* self);

    DWORD m_milliseconds;
    std::atomic<const wchar_t*> m_phase{L"starting"};
    CHandle m_stop;
    CHandle m_thread;
};

} // namespace cvas::player
