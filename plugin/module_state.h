#pragma once
// Process-wide state of the plug-in that the other parts read: the host's
// automation object, the control window, the flags of its life and the
// settings read at start-up. It lives from Init to the unloading of the
// module; everything but the flags is touched on the player's UI thread only.

#include <oaidl.h>
#include <windows.h>

#include "settings/settings_values.h"
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

// The control's window: timer, posted messages and hot keys use it.
HWND PluginWindow();
void SetPluginWindow(HWND window);

// Set at the start of Terminate; the poll does nothing once it is set.
bool IsTerminating();
void SetTerminating(bool terminating);

// True while the worker is meant to run (also after an enabling that lacked
// a user name or password).
bool IsScrobblingEnabled();
void SetScrobblingEnabledFlag(bool enabled);

// The settings as read at start-up, with the edits of the options sheet.
CSettingsValues& Settings();

} // namespace cvas
