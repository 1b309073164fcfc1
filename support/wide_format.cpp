#include "support/wide_format.h"

#include <cwchar>
#include <vector>

namespace cvas
{

std::wstring FormatWideV(std::size_t bufferChars, const wchar_t* format, va_list args)
{
    if (format == nullptr || bufferChars == 0)
        return {};
    // One unit more than the text may keep, so that a text of bufferChars
    // characters or more is seen to be too long and is cut.
    std::vector<wchar_t> buffer(bufferChars + 1);
    wchar_t& beforeLast = buffer[bufferChars - 1];
    beforeLast = L'\0';
    const int written = std::vswprintf(buffer.data(), buffer.size(), format, args);
    if (written >= 0)
    {
        // mingw-w64 gives the whole length of a text that did not fit.
        const std::size_t length = static_cast<std::size_t>(written);
        return std::wstring(buffer.data(), length < bufferChars ? length : bufferChars - 1);
    }
    // glibc fails alike on a text that does not fit and on a format it cannot
    // apply (a bad conversion, narrow text the locale cannot read). Only a
    // text that did not fit runs up to the end of the buffer, and then what
    // is there is its beginning: all that is kept of it, with no retry.
    if (beforeLast != L'\0')
        return std::wstring(buffer.data(), bufferChars - 1);
    return std::wstring(format).substr(0, bufferChars - 1);
}

std::wstring FormatWide(std::size_t bufferChars, const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    std::wstring text = FormatWideV(bufferChars, format, args);
    va_end(args);
    return text;
}

} // namespace cvas
