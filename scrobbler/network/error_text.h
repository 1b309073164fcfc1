#pragma once
// The text for a Win32 or WinINet error code, as the logs show it.

#include <string>

namespace cvas
{

// The system's message for the code, or the fixed WinINet text when the
// system has none (see InternetErrorFallbackText).
std::wstring ErrorText(unsigned long code);

} // namespace cvas
