#pragma once
// The module that holds this code: the plug-in's DLL, or the program that
// links the code in (tests, tools). Resources are loaded from it.

#include <windows.h>

#include <string>

namespace cvas
{

HMODULE ThisModule();
// ThisModule() with a reference of the caller's own, which keeps the module
// loaded until FreeLibrary; null when none could be had.
HMODULE ReferenceThisModule();
// The module's full file name.
std::wstring ThisModulePath();

} // namespace cvas
