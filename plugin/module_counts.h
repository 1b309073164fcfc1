#pragma once
// What keeps the plug-in's DLL loaded: live control objects and class
// factory locks, besides the threads the module started.

namespace cvas
{

void AddModuleObject();
void ReleaseModuleObject();
void LockModule(bool lock);
// True while an object, a lock or a module thread is alive.
bool IsModuleInUse();

} // namespace cvas
