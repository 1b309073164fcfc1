#include "settings/setting_texts.h"

#include <gtest/gtest.h>

using namespace cvas;

// Longer texts are read by their leading integer as the runtime reads it:
// blanks and a sign first, and a value beyond int clamped, not wrapped.
TEST(SettingTexts, BooleanReading)
{
    for (const wchar_t* yes : {L"Y", L"y", L"t", L"E", L"7", L"1", L"Enabled", L"TRUE", L"yes",
                               L"12abc", L" \t3", L"+1", L"2147483648000"})
    {
        EXPECT_TRUE(ReadBoolText(yes, false)) << yes;
    }
    for (const wchar_t* no : {L"0", L"x", L"n", L"no", L"False", L"off", L"-5", L"abc", L"00",
                              L"0x1", L" ", L"-4294967295"})
    {
        EXPECT_FALSE(ReadBoolText(no, true)) << no;
    }
    EXPECT_TRUE(ReadBoolText(L"", true));
    EXPECT_FALSE(ReadBoolText(L"", false));
    EXPECT_STREQ(BoolText(true), L"True");
    EXPECT_STREQ(BoolText(false), L"False");
}

TEST(SettingTexts, FilterLineBreaksAreTabsInTheFile)
{
    EXPECT_EQ(FilterFromStored(L"a=[1]\tb=[2]\t"), L"a=[1]\r\nb=[2]\r\n");
    EXPECT_EQ(FilterToStored(L"a=[1]\r\nb=[2]\r\n"), L"a=[1]\tb=[2]\t");
    // A lone CR or LF is not a line break the options page writes; it stays.
    EXPECT_EQ(FilterToStored(L"a\rb\nc"), L"a\rb\nc");
    const std::wstring filter = L"Filetype=[mp3],[ogg]\r\nArtist=[\x0411\x0438]";
    EXPECT_EQ(FilterFromStored(FilterToStored(filter)), filter);
}
