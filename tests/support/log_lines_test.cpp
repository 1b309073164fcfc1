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

TEST(LogLines, OldLinesAreTrimmedAndLongOnesComeInPieces)
{
    std::vector<std::wstring> lines;
    AppendOldLinePieces(L"text \t\r\n", 10, lines);
    AppendOldLinePieces(L"  \r\n", 10, lines);
    EXPECT_EQ(lines, (std::vector<std::wstring>{L"text", L""}));

    lines.clear();
    const std::wstring longLine = std::wstring(2047, L'x') + std::wstring(10, L'y') + L"\n";
    AppendOldLinePieces(longLine, 10, lines);
    EXPECT_EQ(lines, (std::vector<std::wstring>{std::wstring(2047, L'x'), std::wstring(10, L'y')}));

    // A line of exactly one piece leaves its line feed as an empty entry.
    lines.clear();
    AppendOldLinePieces(std::wstring(2047, L'z') + L"\n", 10, lines);
    EXPECT_EQ(lines, (std::vector<std::wstring>{std::wstring(2047, L'z'), L""}));

    // Reading stops at the limit.
    lines.clear();
    AppendOldLinePieces(std::wstring(5000, L'q'), 2, lines);
    EXPECT_EQ(lines.size(), 2u);
}

TEST(WideFormat, FormatsWideAndNarrowTextAlikeOnEveryCompiler)
{
    EXPECT_EQ(FormatWide(64, L"%ls=%d [%hs] %02x", L"key", -3, "narrow", 10),
              L"key=-3 [narrow] 0a");
    EXPECT_EQ(FormatWide(64, L"%ls", L"\x041F\x5742"), L"\x041F\x5742");
}

TEST(WideFormat, CutsToTheBufferLessOne)
{
    EXPECT_EQ(FormatWide(5, L"%ls", L"abcdefgh"), L"abcd");
    const std::wstring big(20000, L'k');
    EXPECT_EQ(FormatWide(16384, L"%ls!", big.c_str()), big.substr(0, 16383));
    EXPECT_EQ(FormatWide(16384, L"%ls", L""), L"");
}
