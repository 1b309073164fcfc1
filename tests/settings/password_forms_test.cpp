#include "settings/password_forms.h"

#include <gtest/gtest.h>

#include <string>

using namespace cvas;

TEST(PasswordForms, EncoderPlacesLineBreaksAsTheSettingsFileExpects)
{
    // One character: a padded group, so a line break follows it.
    EXPECT_EQ(EncodePassword(L"a"), L"!YQA=\r\n");
    EXPECT_EQ(EncodePasswordForSettingsFile(L"a"), L"!YQA=\r\n");
    // Three characters: six bytes, no padding, no line break at the end.
    EXPECT_EQ(EncodePassword(L"abc"), L"!YQBiAGMA");
    EXPECT_EQ(EncodePassword(L"\x041F\x0430\x0440\x043E\x043B\x044C"), L"!HwQwBEAEPgQ7BEwE");
    // 24 characters fill exactly one 64-character line.
    const std::wstring line(L"eAB4AHgAeAB4AHgAeAB4AHgAeAB4AHgAeAB4AHgAeAB4AHgAeAB4AHgAeAB4AHgA");
    EXPECT_EQ(EncodePassword(std::wstring(24, L'x')), L"!" + line + L"\r\n");
    // 25 characters: a full line, then the padded rest on a line of its own;
    // one line of the settings file keeps only the closing break.
    EXPECT_EQ(EncodePassword(std::wstring(25, L'x')), L"!" + line + L"\r\neAA=\r\n");
    EXPECT_EQ(EncodePasswordForSettingsFile(std::wstring(25, L'x')), L"!" + line + L"eAA=\r\n");
    EXPECT_EQ(EncodePassword(L""), L"");
}

TEST(PasswordForms, EveryStoredFormReadsBack)
{
    for (const std::wstring& password : std::initializer_list<std::wstring>{
             L"a", L"ab", L"abc", L"s3cr3t pass", L"\x041F\x0430\x0440\x043E\x043B\x044C",
             L"\x5742\x672C", std::wstring(25, L'x'), std::wstring(100, L'z')})
    {
        EXPECT_EQ(DecodePassword(EncodePassword(password)), password);
        EXPECT_EQ(DecodePassword(EncodePasswordForSettingsFile(password)), password);
    }
    // A character above U+FFFF survives as its surrogate pair.
    const std::wstring emoji = sizeof(wchar_t) == 2
                                   ? std::wstring(L"\xD83D\xDE00")
                                   : std::wstring(1, static_cast<wchar_t>(0x1F600));
    EXPECT_EQ(EncodePassword(emoji), L"!PdgA3g==\r\n");
    EXPECT_EQ(DecodePassword(L"!PdgA3g=="), emoji);
}

TEST(PasswordForms, DecoderReadsOlderAndHandEditedForms)
{
    // "=" and hex: one character a pair, up to the first pair that is not hex.
    EXPECT_EQ(DecodePassword(L"=414243"), L"ABC");
    EXPECT_EQ(DecodePassword(L"=41e9"), L"A\xE9");
    EXPECT_EQ(DecodePassword(L"=41zz43"), L"A");
    EXPECT_EQ(DecodePassword(L"=414"), L"A");
    // No marker: the clear password as it stands.
    EXPECT_EQ(DecodePassword(L"plain words"), L"plain words");
    EXPECT_EQ(DecodePassword(L""), L"");
    // Line breaks and stray characters between the base64 digits are skipped.
    EXPECT_EQ(DecodePassword(L"!YQBi\r\nAGMA"), L"abc");
    EXPECT_EQ(DecodePassword(L"!YQ B*iAGMA"), L"abc");
    // An odd last byte is read as a character of its own.
    EXPECT_EQ(DecodePassword(L"!YQBi"), L"ab");
    // The text ends at a zero character.
    EXPECT_EQ(DecodePassword(L"!YQAAAGIA"), L"a");
    EXPECT_EQ(DecodePassword(L"!"), L"");
    // Decoding stops at 8,190 bytes.
    const std::wstring longPassword(5000, L'q');
    EXPECT_EQ(DecodePassword(EncodePassword(longPassword)), std::wstring(4095, L'q'));
}
