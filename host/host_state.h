#pragma once
// What the poll and the play request read of the plug-in's life: the host's
// automation object with its lock, and the flags that say whether the
// plug-in is ending and whether scrobbling is on. It lives from Init to the
// unloading of the module; everything but the flags is touched on the
// player's UI thread only.

#include <oaidl.h>
#include <windows.h>

#include "support/critical_section.h"

namespace cvas
{

// Taken by the poll and by Terminate around their use of the automation
// object; re-entrant, and only ever taken on the UI thread.
CCriticalSection& HostLock();

// The automation object that Init received, or null. A reference to it is
// held from Init until Terminate sets null.
IDispatch* HostAutomation();
void SetHostAutomation(IDispatch* automation);

// Set at the start of Terminate; the poll does nothing once it is set.
bool IsTerminating();
void SetTerminating(bool terminating);

// True while the worker is meant to run (also after an enabling that lacked
// a user name or password).
bool IsScrobblingEnabled();
void SetScrobblingEnabledFlag(bool enabled);

} // namespace cvas
