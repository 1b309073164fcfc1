#include "support/hot_key_names.h"
#include "support/text_encoding.h"

#include <gtest/gtest.h>

using namespace cvas;

TEST(HotKeyNames, TextsReadAsModifiersAndOneKey)
{
    constexpr unsigned kAltWin = kModAlt | kModWin;
    const struct
    {
        const wchar_t* text;
        unsigned modifiers, virtualKey;
    } cases[] = {
        {L"Alt+Win+B", kAltWin, 0x42},
        {L"WIN-ALT,b", kAltWin, 0x42},
        {L"CTRL + SHIFT + F1", kModControl | kModShift, 0x70},
        {L"Windows+Control+Shift+Alt+NumPad9", 15, 0x69},
        {L"Alt+Win+B+R", kAltWin, 0x52}, // the last key name wins
        {L"F24,,--++  0", 0, 0x30},
        // Not in the table: non-ASCII letters, unnamed keys, near-modifiers.
        {L"Alt+Win+\u00C4", kAltWin, 0},
        {L"Alt+NumLock+OEM_Plus+;", kModAlt, 0},
        {L"alter+winx+b", 0, 0x42},
        // Modifier words come first: shift and control never become the key.
        {L"shift+control", kModControl | kModShift, 0},
        {L"Ctrl+Menu", kModControl, 0x12},
        {L"", 0, 0},
    };
    for (const auto& c : cases)
    {
        unsigned modifiers = 0xDEAD, virtualKey = 0xBEEF; // both are reset first
        ParseHotKey(c.text, modifiers, virtualKey);
        EXPECT_EQ(modifiers, c.modifiers) << WideToUtf8(c.text);
        EXPECT_EQ(virtualKey, c.virtualKey) << WideToUtf8(c.text);
    }
}

TEST(HotKeyNames, TheTableNames109KeysAndIsBuiltAgainAfterAClear)
{
    ClearKeyNameTable();
    const auto& table = KeyNameTable();
    EXPECT_EQ(table.size(), 109u);
    EXPECT_EQ(table.at(L"return"), 0x0Du);
    EXPECT_EQ(table.at(L"apps"), 0x5Du);
    EXPECT_EQ(table.at(L"numpad0"), 0x60u);
    EXPECT_EQ(table.at(L"divide"), 0x6Fu);
    EXPECT_EQ(table.at(L"f1"), 0x70u);
    EXPECT_EQ(table.at(L"z"), 0x5Au);

    ClearKeyNameTable();
    unsigned modifiers = 0, virtualKey = 0;
    ParseHotKey(L"Win+Snapshot", modifiers, virtualKey);
    EXPECT_EQ(virtualKey, 0x2Cu);
    EXPECT_EQ(KeyNameTable().size(), 109u);
}
