#include "support/ansi_text.h"

#include <windows.h>

#include <climits>

namespace cvas
{

std::wstring AnsiToWide(std::string_view bytes)
{
    if (bytes.empty() || bytes.size() > INT_MAX)
        return {};
    const int size = static_cast<int>(bytes.size());
    const int chars = MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, nullptr, 0);
    std::wstring text(static_cast<std::size_t>(chars > 0 ? chars : 0), L'\0');
    if (chars > 0)
        MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, text.data(), chars);
    return text;
}

std::string WideToAnsi(std::wstring_view text)
{
    if (text.empty() || text.size() > INT_MAX / 4)
        return {};
    const int size = static_cast<int>(text.size());
    const int bytes =
        WideCharToMultiByte(CP_ACP, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<std::size_t>(bytes > 0 ? bytes : 0), '\0');
    if (bytes > 0)
        WideCharToMultiByte(CP_ACP, 0, text.data(), size, out.data(), bytes, nullptr, nullptr);
    return out;
}

} // namespace cvas
