#pragma once
// The plug-in's life inside the player: Init starts everything, the enabled
// state starts and stops the worker, Terminate stops everything.

#include <oaidl.h>
#include <windows.h>

namespace cvas
{

// Init: a second call does nothing. window is the control's window.
HRESULT PluginInit(IDispatch* automation, HWND window);
// Stops the worker when it runs; with enabled, and a user name and a
// password set, loads the queue and starts the worker and the poll timer.
void SetScrobblingEnabled(bool enabled);
// Terminate: nothing that goes wrong here leaves it.
void PluginTerminate();

} // namespace cvas
