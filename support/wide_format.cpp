#include "support/wide_format.h"

#include <cwchar>
#include <vector>

namespace cvas
{

std::wstring FormatWideV(std::size_t bufferChars, const wchar_t* format, va_list args)
{
    if (format == nullptr || bufferChars == 0)
        return {};
    // vswprintf reports overflow without saying how much room it wants, so
    // the buffer grows until the whole text fits; then it is cut to size.
    // The cap keeps a runaway format (a huge width) from taking the process.
    constexpr std::size_t kMaxChars = std::size_t{1} << 22;
    std::vector<wchar_t> buffer(bufferChars + 1);
    for (;;)
    {
        va_list copy;
        va_copy(copy, args);
        const int written = std::vswprintf(buffer.data(), buffer.size(), format, copy);
        va_end(copy);
        if (written >= 0)
        {
            const std::size_t length = static_cast<std::size_t>(written);
            return std::wstring(buffer.data(), length < bufferChars ? length : bufferChars - 1);
        }
        if (buffer.size() >= kMaxChars)
            return std::wstring(format).substr(0, bufferChars - 1);
        buffer.resize(buffer.size() * 4);
    }
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
