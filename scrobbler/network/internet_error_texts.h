#pragma once
// Texts for the WinINet error codes that the system itself has no message
// for.

#include <string>

namespace cvas
{

// The fixed text for a WinINet error code; "Could not find error text for
// error N" for any code without one. ERROR_INTERNET_EXTENDED_ERROR (12003)
// has an empty text: the server's own words come with it.
std::wstring InternetErrorFallbackText(unsigned long code);

} // namespace cvas
