#include "support/log_lines.h"
#include "support/wide_format.h"

#include <gtest/gtest.h>

using namespace cvas;

TEST(LogLines, PrefixPutsTheDayFirstAndTheNumberInNinePlaces)
{
    EXPECT_EQ(LogLinePrefix({2026, 11, 16, 3, 40, 15, 42}, 17),
              L"16/11/2026 03:40:15.042 (       17) > ");
    EXPECT_EQ(LogLinePrefix({999, 1, 2, 23, 5, 6, 7}, 4294967295u),
              L"02/01/0999 23:05:06.007 (4294967295) > ");
}

TEST(LogLines, MessagesSplitAtLineFeedsAndEmptyPiecesVanish)
{
    EXPECT_EQ(SplitMessageLines(L"a\nb"), (std::vector<std::wstring>{L"a", L"b"}));
    EXPECT_EQ(SplitMessageLines(L"\n\na\n\n\nb\n"), (std::vector<std::wstring>{L"a", L"b"}));
    EXPECT_TRUE(SplitMessageLines(L"\n\n\n").empty());
    EXPECT_TRUE(SplitMessageLines(L"").empty());
    // A carriage return is not a line break of its own.
    EXPECT_EQ(SplitMessageLines(L"a\r\nb"), (std::vector<std::wstring>{L"a\r", L"b"}));
}

namespace
{

std::vector<std::wstring> ReadPieces(std::wstring_view text, std::size_t feedSize = 0,
                                     std::size_t maxLines = 100)
{
    CLogPieceReader reader(maxLines);
    if (feedSize == 0)
        feedSize = text.size() + 1;
    for (std::size_t at = 0; at < text.size(); at += feedSize)
        reader.Feed(text.substr(at, feedSize));
    reader.Finish();
    return reader.TakeLines();
}

// The file that a write makes of entries: each ended by CR LF.
std::wstring Written(const std::vector<std::wstring>& lines)
{
    std::wstring text;
    for (const std::wstring& line : lines)
        text += line + L"\r\n";
    return text;
}

} // namespace

TEST(LogLines, OldLinesAreTrimmedAndLongOnesComeInPieces)
{
    EXPECT_EQ(ReadPieces(L"text \t\r\n  \r\nlast"),
              (std::vector<std::wstring>{L"text", L"", L"last"}));
    EXPECT_EQ(ReadPieces(std::wstring(2047, L'x') + std::wstring(10, L'y') + L"\r\n"),
              (std::vector<std::wstring>{std::wstring(2047, L'x'), std::wstring(10, L'y')}));
    // A CR on its own is kept, and trimmed only at the end of a piece.
    EXPECT_EQ(ReadPieces(L"a\rb\r"), (std::vector<std::wstring>{L"a\rb"}));

    CLogPieceReader reader(2);
    reader.Feed(std::wstring(5000, L'q'));
    EXPECT_TRUE(reader.Done());
    reader.Feed(L"\r\nmore\r\n");
    reader.Finish();
    EXPECT_EQ(reader.TakeLines().size(), 2u) << "reading stops at the limit";
}

TEST(LogLines, NoLineLengthMakesEntriesGrowWhenReadBackAgain)
{
    for (const std::size_t length : {2045u, 2046u, 2047u, 2048u, 4094u, 4095u, 6141u})
    {
        SCOPED_TRACE(length);
        const std::wstring line(length, L'x');
        const auto first = ReadPieces(line + L"\r\n\r\nend\r\n");
        const std::size_t pieces = (length + kLogPieceChars - 1) / kLogPieceChars;
        ASSERT_EQ(first.size(), pieces + 2);
        EXPECT_EQ(first[pieces], L"") << "a blank line stays an empty entry";
        EXPECT_EQ(first[pieces + 1], L"end");
        EXPECT_EQ(ReadPieces(Written(first)), first);
    }
}

TEST(LogLines, TextMayArriveInPartsOfAnySize)
{
    const std::wstring text = std::wstring(2047, L'a') + L"\r\n" + std::wstring(2046, L'b') +
                              L"\r\n\r\nc\rd\r\n" + std::wstring(3000, L'e') + L"\r";
    const auto whole = ReadPieces(text);
    EXPECT_EQ(whole, (std::vector<std::wstring>{std::wstring(2047, L'a'), std::wstring(2046, L'b'),
                                                L"", L"c\rd", std::wstring(2047, L'e'),
                                                std::wstring(953, L'e')}));
    for (const std::size_t part : {1u, 2u, 3u, 7u, 2046u, 2047u, 2048u})
        EXPECT_EQ(ReadPieces(text, part), whole) << "in parts of " << part;
}

TEST(LogLines, APieceIsNotCutInsideASurrogatePair)
{
    const std::wstring pair = L"\xD83D\xDE00"; // U+1F600 where wchar_t is 16 bits
    EXPECT_EQ(ReadPieces(std::wstring(2046, L'x') + pair + L"y\r\n"),
              (std::vector<std::wstring>{std::wstring(2046, L'x'), pair + L"y"}));
    EXPECT_EQ(ReadPieces(std::wstring(2045, L'x') + pair + L"\r\n" + pair),
              (std::vector<std::wstring>{std::wstring(2045, L'x') + pair, pair}));
}

TEST(WideFormat, FormatsWideAndNarrowTextAlikeOnEveryCompiler)
{
    EXPECT_EQ(FormatWide(64, L"%ls=%d [%hs] %02x", L"key", -3, "narrow", 10),
              L"key=-3 [narrow] 0a");
    EXPECT_EQ(FormatWide(64, L"%ls", L"\x041F\x5742"), L"\x041F\x5742");
}

TEST(WideFormat, CutsToTheBufferLessOne)
{
    EXPECT_EQ(FormatWide(5, L"%ls", L"abcd"), L"abcd");
    EXPECT_EQ(FormatWide(5, L"%ls", L"abcde"), L"abcd");
    EXPECT_EQ(FormatWide(5, L"%ls", L"abcdef"), L"abcd");
    EXPECT_EQ(FormatWide(5, L"%ls", L"abcdefgh"), L"abcd");
    const std::wstring big(20000, L'k');
    EXPECT_EQ(FormatWide(16384, L"%ls!", big.c_str()), big.substr(0, 16383));
    EXPECT_EQ(FormatWide(16384, L"%ls", L""), L"");
}

TEST(WideFormat, AFormatTheRuntimeCannotApplyGivesTheFormatItself)
{
    // An unfinished conversion: glibc refuses it, mingw-w64 writes it as it stands.
    EXPECT_EQ(FormatWide(64, L"a %Z", 1), L"a %Z");
    EXPECT_EQ(FormatWide(3, L"a %Z", 1), L"a ");
#ifdef _WIN32
    EXPECT_EQ(FormatWide(64, L"[%hs]", "\xFF"), L"[\xFF]");
#else
    EXPECT_EQ(FormatWide(64, L"[%hs]", "\xFF"), L"[%hs]");
#endif
    // A failure past the part that is kept does not matter.
    EXPECT_EQ(FormatWide(4, L"%ls%hs", L"abcdef", "\xFF"), L"abc");
}
