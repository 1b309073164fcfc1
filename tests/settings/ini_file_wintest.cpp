#include "common/temp_folder.h"
#include "settings/ini_file.h"
#include "settings/settings_values.h"

#include <gtest/gtest.h>

using namespace cvas;
using cvas::test::CTempFolder;
using cvas::test::ReadFileBytes;
using cvas::test::WriteFileBytes;

TEST(Ini, ReadsTypedValuesWithTheirDefaults)
{
    CTempFolder folder;
    WriteFileBytes(folder.File(L"Settings.INI"), "[General]\r\nText=hello\r\nNumber=42\r\n"
                                                 "Negative=-7\r\nFlag=Enabled\r\nOff=no\r\n"
                                                 "Empty=\r\n");
    const CIni ini(folder.File(L"Settings.INI"));
    EXPECT_TRUE(ini.FileExists());
    EXPECT_EQ(ini.GetString(L"General", L"Text", L"x"), L"hello");
    EXPECT_EQ(ini.GetString(L"General", L"Missing", L"fallback"), L"fallback");
    EXPECT_EQ(ini.GetInt(L"General", L"Number", 1), 42);
    EXPECT_EQ(ini.GetInt(L"General", L"Negative", 1), -7);
    EXPECT_EQ(ini.GetInt(L"General", L"Missing", 9), 9);
    EXPECT_TRUE(ini.GetBool(L"General", L"Flag", false));
    EXPECT_FALSE(ini.GetBool(L"General", L"Off", true));
    EXPECT_TRUE(ini.GetBool(L"General", L"Empty", true));
    EXPECT_FALSE(ini.GetBool(L"General", L"Missing", false));
}

TEST(Ini, ReturnsAtMost2048Characters)
{
    CTempFolder folder;
    const CIni ini(folder.File(L"Settings.INI"));
    ASSERT_TRUE(ini.WriteString(L"General", L"Long", std::wstring(3000, L'w')));
    EXPECT_EQ(ini.GetString(L"General", L"Long", L""), std::wstring(2048, L'w'));
}

TEST(Ini, NewFileIsUtf16SoThatNonLatinTextsSurvive)
{
    CTempFolder folder;
    const CIni ini(folder.File(L"Settings.INI"));
    EXPECT_FALSE(ini.FileExists());
    const std::wstring cyrillic = L"\x0418\x0432\x0430\x043D"; // Иван
    const std::wstring japanese = L"\x5742\x672C\x9F8D\x4E00"; // 坂本龍一
    ASSERT_TRUE(ini.WriteString(L"General", L"UserName", cyrillic));
    ASSERT_TRUE(ini.WriteString(L"General", L"Filter", L"Artist=[" + japanese + L"]"));
    ASSERT_TRUE(ini.WriteBool(L"General", L"Enabled", true));

    const std::string bytes = ReadFileBytes(folder.File(L"Settings.INI"));
    ASSERT_GE(bytes.size(), 2u);
    EXPECT_EQ(bytes.substr(0, 2), "\xFF\xFE");

    const CIni again(folder.File(L"Settings.INI"));
    EXPECT_EQ(again.GetString(L"General", L"UserName", L""), cyrillic);
    EXPECT_EQ(again.GetString(L"General", L"Filter", L""), L"Artist=[" + japanese + L"]");
    EXPECT_EQ(again.GetString(L"General", L"Enabled", L""), L"True");
}

TEST(Ini, AnExistingAnsiFileIsLeftInItsForm)
{
    CTempFolder folder;
    WriteFileBytes(folder.File(L"Settings.INI"), "[General]\r\nUserName=someone\r\n");
    const CIni ini(folder.File(L"Settings.INI"));
    ASSERT_TRUE(ini.WriteString(L"General", L"Artist", L"[ARTIST]"));
    const std::string bytes = ReadFileBytes(folder.File(L"Settings.INI"));
    EXPECT_EQ(bytes.substr(0, 9), "[General]");
    EXPECT_EQ(ini.GetString(L"General", L"UserName", L""), L"someone");
    EXPECT_EQ(ini.GetString(L"General", L"Artist", L""), L"[ARTIST]");
}
