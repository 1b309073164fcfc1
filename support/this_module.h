#pragma once
// The module that holds this code: the plug-in's DLL, or the program that
// links the code in (tests, tools). Resources are loaded from it.

#include <windows.h>

#include <string>

namespace cvas
{

HMODULE ThisModule();
// The module's full file name.
std::wstring ThisModulePath();

} // namespace cvas
