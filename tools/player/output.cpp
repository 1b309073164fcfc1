#include "tools/player/output.h"

#include <cstdio>

#include "support/text_encoding.h"

namespace cvas::player
{

namespace
{

void Write(std::FILE* stream, const std::wstring& text)
{
    const std::string bytes = WideToUtf8(text) + "\n";
    std::fwrite(bytes.data(), 1, bytes.size(), stream);
    std::fflush(stream);
}

} // namespace

void WriteLine(const std::wstring& text)
{
    Write(stdout, text);
}

void WriteError(const std::wstring& text)
{
    Write(stderr, L"simulated_player: " + text);
}

void WriteEvent(double time, const std::wstring& text)
{
    char stamp[32];
    std::snprintf(stamp, sizeof(stamp), "[%10.3f] ", time);
    Write(stdout, Utf8ToWide(stamp) + text);
}

} // namespace cvas::player
