#pragma once
// Process-wide state that the host side and the submission worker share:
// the two events the worker waits on and the queue lock. It lives from
// start-up to the unloading of the module.

#include "support/critical_section.h"

#include <windows.h>

namespace cvas
{

// Makes EventShutdown (manual-reset) and EventData (auto-reset), neither
// signalled, in place of any earlier pair, and logs "Created
// EventShutdown=0x%x   EventData=0x%x". Returns whether both were made.
bool CreateEngineEvents();
// Closes both events; later calls of EventShutdown() and EventData() give null.
void CloseEngineEvents();

// Once set, EventShutdown stays set until the stopping side resets it, so
// every wait on it in the meantime returns at once.
HANDLE EventShutdown();
// Set once for each queued play, and at start-up to submit what was saved.
HANDLE EventData();

// Guards the incoming list, and nothing more: the worker holds it only while
// it takes the incoming records, so an enqueue never waits for a file.
CCriticalSection& QueueLock();

} // namespace cvas
