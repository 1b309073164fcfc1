#pragma once
// Opening a file with the shell's "open" verb, behind one seam so that tests
// can see what would be opened without starting another program.

#include <windows.h>

#include <functional>
#include <string>

namespace cvas
{

// Opens the file, shown normally, with the owner window; false on failure.
bool ShellOpenFile(HWND owner, const std::wstring& file);

// Replaces what ShellOpenFile does; an empty handler restores the shell.
// Returns the previous handler.
using ShellOpenHandler = std::function<bool(HWND owner, const std::wstring& file)>;
ShellOpenHandler SetShellOpenHandler(ShellOpenHandler handler);

} // namespace cvas
