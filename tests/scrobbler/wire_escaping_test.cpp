// The wire escaping: which bytes go as they are, the form of the others, and
// texts cut to fit a request field.
#include "scrobbler/queue/wire_escaping.h"
#include "support/text_encoding.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

using namespace cvas;

namespace
{

std::string Escape(std::string_view utf8)
{
    return EscapeForWire(utf8).bytes;
}

std::string EscapeWide(std::wstring_view text)
{
    return Escape(WideToUtf8(text));
}

} // namespace

TEST(WireEscaping, PrintableAsciiTable)
{
    // Each printable character and what goes on the wire for it.
    const std::string expected = "%20!%22%23$%25%26'()*%2B,-.%2F"           // space to /
                                 "0123456789:;%3C=%3E%3F"                   // 0 to ?
                                 "@ABCDEFGHIJKLMNOPQRSTUVWXYZ%5B%5C%5D%5E_" // @ to _
                                 "%60abcdefghijklmnopqrstuvwxyz%7B%7C%7D~"; // backtick to ~
    std::string printable;
    for (char c = 0x20; c < 0x7F; ++c)
        printable.push_back(c);
    EXPECT_EQ(Escape(printable), expected);
}

TEST(WireEscaping, ControlAndHighBytesAreEscapedUpperCase)
{
    for (int byte = 0; byte < 0x100; ++byte)
    {
        if (byte >= 0x20 && byte < 0x7F)
            continue;
        const std::string one(1, static_cast<char>(byte));
        char expected[4];
        std::snprintf(expected, sizeof expected, "%%%02X", byte);
        EXPECT_EQ(Escape(one), expected) << "byte " << byte;
    }
}

TEST(WireEscaping, TextsOutsideAsciiGoAsEscapedUtf8)
{
    EXPECT_EQ(EscapeWide(L"\x0414\x0414\x0422"), "%D0%94%D0%94%D0%A2"); // ДДТ
    EXPECT_EQ(EscapeWide(L"\x5742\x672C\x9F8D\x4E00"),                  // 坂本龍一
              "%E5%9D%82%E6%9C%AC%E9%BE%8D%E4%B8%80");
    EXPECT_EQ(EscapeWide(L"5 \x20AC"), "5%20%E2%82%AC"); // €
    EXPECT_EQ(EscapeWide(L"\x0153uvre"), "%C5%93uvre");  // œuvre
    EXPECT_EQ(EscapeWide(L"Simon + Garfunkel & Co=1"), "Simon%20%2B%20Garfunkel%20%26%20Co=1");
    EXPECT_EQ(EscapeWide(L"2024-01-02 03:04:05"), "2024-01-02%2003:04:05");
    EXPECT_EQ(EscapeWide(L""), "");
    // Beyond U+FFFF: a surrogate pair where wchar_t has 16 bits, one unit elsewhere.
    const std::wstring note =
        sizeof(wchar_t) == 2 ? std::wstring(L"\xD83C\xDFB5") : std::wstring(1, wchar_t(0x1F3B5));
    EXPECT_EQ(EscapeWide(note), "%F0%9F%8E%B5");
}

TEST(WireEscaping, TextThatFitsExactlyIsNotCut)
{
    const std::string exact(kWireFieldBufferBytes - 1, 'a');
    const CWireText wire = EscapeForWire(exact);
    EXPECT_FALSE(wire.cut);
    EXPECT_EQ(wire.bytes, exact);
    EXPECT_TRUE(EscapeForWire(exact + "b").cut);
}

TEST(WireEscaping, CutFormsStayWholeCharactersForEveryLength)
{
    // Texts of mixed widths near the limit, so that the cut falls at every
    // position within a character: the form always ends on a whole escape of
    // a whole character, and decodes to a prefix of the text.
    const std::string utf8 = WideToUtf8(L"a\x00E9\x20AC+b\x0416 ");
    std::string text;
    while (text.size() < 3 * kWireFieldBufferBytes)
        text += utf8;
    for (std::size_t limit = 1; limit < 40; ++limit)
    {
        const CWireText wire = EscapeForWire(text, kWireFieldBufferBytes - limit);
        ASSERT_TRUE(wire.cut);
        EXPECT_LE(wire.bytes.size(), kWireFieldBufferBytes - limit);
        EXPECT_EQ(wire.bytes, Escape(text.substr(0, wire.sourceUsed)));
        EXPECT_NE(static_cast<unsigned char>(text[wire.sourceUsed]) & 0xC0, 0x80u)
            << "the cut never falls inside a character";
        EXPECT_GT(wire.bytes.size() + 9, kWireFieldBufferBytes - limit)
            << "no room was left for the next character";
    }
}
