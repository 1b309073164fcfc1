#include "support/text_encoding.h"

#include <gtest/gtest.h>

#include <string>

using namespace cvas;

namespace
{
// U+1F3B5 (musical note) as wide text on either width of wchar_t.
std::wstring MusicalNote()
{
    if (sizeof(wchar_t) == 2)
        return std::wstring(L"\xD83C\xDFB5");
    return std::wstring(1, static_cast<wchar_t>(0x1F3B5));
}
} // namespace

TEST(TextEncoding, Utf8RoundTripsEveryPlane)
{
    const std::wstring text =
        L"A\xE9\x20AC\x041F\x5742\x672C" + MusicalNote() + L"\x0153" + L"\xFFFD";
    const std::string utf8 = WideToUtf8(text);
    EXPECT_EQ(utf8, "A\xC3\xA9\xE2\x82\xAC\xD0\x9F\xE5\x9D\x82\xE6\x9C\xAC\xF0\x9F\x8E\xB5"
                    "\xC5\x93\xEF\xBF\xBD");
    EXPECT_EQ(Utf8ToWide(utf8), text);
}

TEST(TextEncoding, Latin1AndMalformedUtf8ReadByteForByte)
{
    EXPECT_EQ(Latin1ToWide("caf\xE9"), L"caf\xE9");
    EXPECT_EQ(WideToLatin1(L"caf\xE9\x20AC"), "caf\xE9?");
    // A single-byte text (é in Latin-1), a truncated sequence, an overlong
    // form and an encoded surrogate: each bad byte stands for itself.
    EXPECT_EQ(Utf8ToWide("caf\xE9"), L"caf\xE9");
    EXPECT_EQ(Utf8ToWide("\xE2\x82"), L"\xE2\x82");
    EXPECT_EQ(Utf8ToWide("\xC0\xAF"), L"\xC0\xAF");
    EXPECT_EQ(Utf8ToWide("\xED\xA0\x80"), L"\xED\xA0\x80");
    EXPECT_EQ(Utf8ToWide("a\xF5\x80z"), L"a\xF5\x80z");
}

TEST(TextEncoding, WellFormedUtf8IsToldFromOtherBytes)
{
    EXPECT_TRUE(IsWellFormedUtf8(""));
    EXPECT_TRUE(IsWellFormedUtf8("plain"));
    EXPECT_TRUE(IsWellFormedUtf8(WideToUtf8(L"Bj\xF6rk \x041A\x0438\x043D\x043E" + MusicalNote())));
    for (const char* bad :
         {"Bj\xF6rk", "\xE2\x82", "\xC0\xAF", "\xED\xA0\x80", "a\xF5\x80z", "\xF0\x9F\x8E", "\x80"})
        EXPECT_FALSE(IsWellFormedUtf8(bad)) << bad;
}

TEST(TextEncoding, LoneSurrogatesBecomeReplacementCharacters)
{
    std::wstring lone(1, static_cast<wchar_t>(0xD800));
    lone += L"x";
    EXPECT_EQ(WideToUtf8(lone), "\xEF\xBF\xBDx");
    EXPECT_EQ(Utf16LeToWide(std::string("\x00\xD8\x78\x00", 4)),
              sizeof(wchar_t) == 2 ? lone : L"\xFFFDx");
}

TEST(TextEncoding, Utf16LeRoundTripsAndDropsAnOddByte)
{
    const std::wstring text = L"Ab\x5742" + MusicalNote();
    const std::string bytes = WideToUtf16Le(text);
    EXPECT_EQ(bytes, std::string("A\0b\0\x42\x57\x3C\xD8\xB5\xDF", 10));
    EXPECT_EQ(Utf16LeToWide(bytes), text);
    EXPECT_EQ(Utf16LeToWide(bytes + "Z"), text);
}

TEST(TextEncoding, CharactersBeyondAsciiAnywhereInLongAsciiRuns)
{
    // Runs of ASCII are converted several characters at a time: one other
    // character at every position of a long run must come out in place.
    struct Case
    {
        std::wstring wide;
        std::string utf8;
    };
    std::wstring lone(1, static_cast<wchar_t>(0xDC00));
    const Case cases[] = {{L"\xE9", "\xC3\xA9"},
                          {L"\x20AC", "\xE2\x82\xAC"},
                          {MusicalNote(), "\xF0\x9F\x8E\xB5"},
                          {L"\x7F", "\x7F"}};
    for (const Case& other : cases)
    {
        for (std::size_t at = 0; at <= 40; ++at)
        {
            const std::wstring wide =
                std::wstring(at, L'a') + other.wide + std::wstring(40 - at, L'b');
            const std::string utf8 = std::string(at, 'a') + other.utf8 + std::string(40 - at, 'b');
            EXPECT_EQ(WideToUtf8(wide), utf8) << at;
            EXPECT_EQ(Utf8ToWide(utf8), wide) << at;
        }
    }
    for (std::size_t at = 0; at <= 40; ++at)
    {
        // A lone surrogate, and a byte that starts no sequence.
        EXPECT_EQ(WideToUtf8(std::wstring(at, L'a') + lone + L"bbbbbbbbbbbbbbbb"),
                  std::string(at, 'a') + "\xEF\xBF\xBD" + "bbbbbbbbbbbbbbbb");
        EXPECT_EQ(Utf8ToWide(std::string(at, 'a') + "\xFF" + "bbbbbbbbbbbbbbbb"),
                  std::wstring(at, L'a') + L"\xFF" + L"bbbbbbbbbbbbbbbb");
    }
}
