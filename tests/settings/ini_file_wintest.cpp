#include "common/temp_folder.h"
#include "settings/ini_file.h"

#include <gtest/gtest.h>

using namespace cvas;
using cvas::test::CTempFolder;
using cvas::test::ReadFileBytes;
using cvas::test::WriteFileBytes;

TEST(Ini, ReturnsAtMost2048Characters)
{
    CTempFolder folder;
    const CIni ini(folder.File(L"Settings.INI"));
    ASSERT_TRUE(ini.WriteString(L"General", L"Long", std::wstring(3000, L'w')));
    EXPECT_EQ(ini.GetString(L"General", L"Long", L""), std::wstring(2048, L'w'));
}

// The private-profile functions would make a new file in the ANSI code page,
// where a Cyrillic or Japanese text becomes question marks.
TEST(Ini, ANewFileIsUtf16AndAnExistingAnsiFileIsLeftInItsForm)
{
    CTempFolder folder;
    const CIni ini(folder.File(L"Settings.INI"));
    EXPECT_FALSE(ini.FileExists());
    const std::wstring text = L"\x0418\x0432\x0430\x043D \x5742\x672C\x9F8D\x4E00";
    ASSERT_TRUE(ini.WriteString(L"General", L"UserName", text));
    EXPECT_TRUE(ini.FileExists());
    EXPECT_EQ(ReadFileBytes(ini.Path()).substr(0, 2), "\xFF\xFE");
    EXPECT_EQ(CIni(ini.Path()).GetString(L"General", L"UserName", L""), text);

    const CIni ansi(folder.File(L"Ansi.INI"));
    WriteFileBytes(ansi.Path(), "[General]\r\nUserName=someone\r\n");
    ASSERT_TRUE(ansi.WriteString(L"General", L"Artist", L"[ARTIST]"));
    EXPECT_EQ(ReadFileBytes(ansi.Path()).substr(0, 9), "[General]");
    EXPECT_EQ(ansi.GetString(L"General", L"UserName", L""), L"someone");
    EXPECT_EQ(ansi.GetString(L"General", L"Artist", L""), L"[ARTIST]");
}
