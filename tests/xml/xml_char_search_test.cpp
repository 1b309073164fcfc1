// Character search eight characters a step: every position of a match, the
// characters after the last full step, and characters that only look like
// the ones searched for once narrowed to 16 bits.
#include "xml/xml_char_search.h"

#include <gtest/gtest.h>

#include <string>

using namespace cvas;

namespace
{

// Characters whose low 16 (or 8) bits are those of "<", which a search that
// cut characters short instead of saturating them would take for "<".
std::wstring LookAlikes()
{
    std::wstring alike = {static_cast<wchar_t>(0xFF3C), static_cast<wchar_t>(0x803C),
                          static_cast<wchar_t>(0x013C)};
    if constexpr (sizeof(wchar_t) == 4)
    {
        alike += static_cast<wchar_t>(0x1003C);
        alike += static_cast<wchar_t>(0x7FFF003C);
        alike += static_cast<wchar_t>(-0xFFC4); // 0xFFFF003C as a signed wchar_t
    }
    return alike;
}

} // namespace

TEST(XmlCharacterSearch, FindsTheFirstMatchAtEveryPositionAndLength)
{
    for (std::size_t length = 0; length <= 40; ++length)
    {
        for (std::size_t at = 0; at <= length; ++at)
        {
            std::wstring text(length, L'a');
            if (at < length)
                text[at] = L'<';
            if (at + 3 < length)
                text[at + 3] = L'>'; // a later match does not count
            const wchar_t* begin = text.data();
            const wchar_t* end = begin + text.size();
            EXPECT_EQ(FindXmlCharacter(begin, end, L'<') - begin, static_cast<long>(at))
                << length << " " << at;
            EXPECT_EQ(FindXmlCharacter(begin, end, L'&', L'<') - begin, static_cast<long>(at));
            EXPECT_EQ(FindXmlCharacterBelow(begin, end, L'@', L'\\') - begin,
                      static_cast<long>(at));
        }
    }
}

TEST(XmlCharacterSearch, CharactersBeyondSixteenBitsOrAsciiAreNotTakenForOthers)
{
    const std::wstring alike = LookAlikes();
    std::wstring text;
    for (int round = 0; round < 4; ++round)
        text += alike + L"xyz";
    const wchar_t* begin = text.data();
    const wchar_t* end = begin + text.size();
    EXPECT_EQ(FindXmlCharacter(begin, end, L'<'), end);
    EXPECT_EQ(FindXmlCharacter(begin, end, L'<', L'>', L'&'), end);
    // None of them is below "@" either, taken as unsigned.
    EXPECT_EQ(FindXmlCharacterBelow(begin, end, L'@', L'\\'), end);

    text += L"<";
    EXPECT_EQ(FindXmlCharacter(text.data(), text.data() + text.size(), L'<'),
              text.data() + text.size() - 1);
}

TEST(XmlCharacterSearch, BelowFindsEveryCharacterUnderTheLimitAndTheOtherOne)
{
    for (wchar_t c = 0; c < 0x80; ++c)
    {
        std::wstring text(12, L'n');
        text[9] = c;
        const wchar_t* begin = text.data();
        const bool found = c < L'@' || c == L'\\';
        EXPECT_EQ(FindXmlCharacterBelow(begin, begin + text.size(), L'@', L'\\') - begin,
                  found ? 9 : 12)
            << static_cast<int>(c);
    }
}
