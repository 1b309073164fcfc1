#include "scrobbler/network/internet_error_texts.h"

#include "support/wide_format.h"

namespace cvas
{

std::wstring InternetErrorFallbackText(unsigned long code)
{
    switch (code)
    {
    case 12002: // ERROR_INTERNET_TIMEOUT
        return L"Timeout.";
    case 12003: // ERROR_INTERNET_EXTENDED_ERROR
        return L"";
    case 12007: // ERROR_INTERNET_NAME_NOT_RESOLVED
        return L"Internet name not resolved.";
    case 12013: // ERROR_INTERNET_INCORRECT_USER_NAME
        return L"Incorrect username.";
    case 12014: // ERROR_INTERNET_INCORRECT_PASSWORD
        return L"Incorrect password.";
    case 12029: // ERROR_INTERNET_CANNOT_CONNECT
        return L"Cannot connect to the specified address/port.";
    default:
        return FormatWide(128, L"Could not find error text for error %u",
                          static_cast<unsigned>(code));
    }
}

} // namespace cvas
