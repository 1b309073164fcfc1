#include "scrobbler/network/error_text.h"

#include "scrobbler/network/internet_error_texts.h"

#include <windows.h>

#include <vector>

namespace cvas
{

std::wstring ErrorText(unsigned long code)
{
    constexpr DWORD kMessageChars = 16384;
    std::vector<wchar_t> buffer(kMessageChars, L'\0');
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                  nullptr, code, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
                                  buffer.data(), kMessageChars, nullptr);
    if (length == 0)
        return InternetErrorFallbackText(code);
    // The system's messages end with a line break, which would leave an empty
    // line in the log and in the submitted-tracks list.
    while (length > 0 && (buffer[length - 1] == L'\r' || buffer[length - 1] == L'\n' ||
                          buffer[length - 1] == L' '))
        --length;
    return std::wstring(buffer.data(), length);
}

} // namespace cvas
