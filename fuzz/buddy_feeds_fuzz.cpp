// Feeds arbitrary bytes, read as UTF-8, to the buddy feed readers: the
// friends list, the error check and the recent tracks, then reads the time
// of every track found. Checks what must hold for any text.
#include "buddies/buddy_feeds.h"
#include "support/text_encoding.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

using namespace cvas;

namespace
{

void Check(bool condition)
{
    if (!condition)
        std::abort();
}

// The C library's own reading of a number, on the ASCII part of text (any
// other character stops it as it stops UtsSeconds).
long long ReferenceSeconds(std::wstring_view text)
{
    std::string narrow;
    for (wchar_t c : text)
        narrow += (c > 0 && c < 0x80) ? static_cast<char>(c) : '?';
    return std::strtoll(narrow.c_str(), nullptr, 10);
}

void CheckTime(std::wstring_view uts)
{
    const long long seconds = UtsSeconds(uts);
    Check(seconds == ReferenceSeconds(uts));
    const std::wstring when = WhenText(seconds);
    // Empty, or the fixed form, whose year takes as many digits as it has
    // and whose day has two digits.
    Check(when.empty() || when.size() >= 21);
    Check(when.empty() || (when[3] == L' ' && when[7] == L' ' && when[13] == L':'));
    Check(when.empty() ||
          (when[8] >= L'0' && when[8] <= L'3' && when[9] >= L'0' && when[9] <= L'9'));
    Check(when.empty() || when.back() != L' ');
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::wstring text =
        Utf8ToWide(std::string_view(reinterpret_cast<const char*>(data), size));

    (void)ParseFriendNames(text);
    Check(IsErrorAnswer(text) == (text.substr(0, 6) == L"Error:"));

    for (const CParsedRecentTrack& track : ParseRecentTracks(text))
        CheckTime(track.uts);
    // The start of the input itself, as a time text.
    CheckTime(std::wstring_view(text).substr(0, 32));
    return 0;
}
