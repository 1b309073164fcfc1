#include "common/captured_messages.h"
#include "support/hot_key_names.h"
#include "support/hot_keys.h"
#include "ui/test_window.h"
#include "ui/ui_handles.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <utility>
#include <vector>

using namespace cvas;
using cvas::test::TakeCapturedMessages;

namespace
{

// All four modifiers and a key from F13 up: no other program under the same
// Wine server holds such a combination.
constexpr unsigned kAll = kModAlt | kModControl | kModShift | kModWin;

// Whether some window holds the combination: our own registration is refused.
bool CombinationTaken(HWND probe, unsigned virtualKey)
{
    if (!RegisterHotKey(probe, 0x7000, kAll, virtualKey))
        return true;
    UnregisterHotKey(probe, 0x7000);
    return false;
}

class HotKeysTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(window && probe);
        TakeCapturedMessages();
        previous = SetHotKeyCommandHandler([this](unsigned command) {
            commands.push_back({command, InsideHotKey()});
        });
    }
    void TearDown() override
    {
        ClearHotKeys();
        SetHotKeyCommandHandler(std::move(previous));
    }

    std::wstring AtomName(const std::wstring& text) const
    {
        std::wostringstream name;
        name << std::hex << std::uppercase << reinterpret_cast<std::uintptr_t>(window.Get())
             << L"_HK_" << text;
        return name.str();
    }
    ATOM AtomOf(const std::wstring& text) const { return GlobalFindAtomW(AtomName(text).c_str()); }

    CWindow window{test::CreateTestWindow(L"CvasHotKeyTest")};
    CWindow probe{test::CreateTestWindow(L"CvasHotKeyTest")};
    HotKeyCommandHandler previous;
    std::vector<std::pair<unsigned, bool>> commands; // with whether inside the hot key
};

using Commands = std::vector<std::pair<unsigned, bool>>;

} // namespace

TEST_F(HotKeysTest, AKeyIsRegisteredUnderAnAtomNamedAfterTheWindowAndTheText)
{
    AddHotKey(window.Get(), L"", L"", kBuddyCommand);
    EXPECT_EQ(AtomOf(L""), 0) << "an empty text makes nothing";

    AddHotKey(window.Get(), L"Ctrl+Alt+Shift+Win+F13", L"", kBuddyCommand);
    EXPECT_TRUE(TakeCapturedMessages().empty());
    const ATOM atom = AtomOf(L"Ctrl+Alt+Shift+Win+F13");
    ASSERT_NE(atom, 0);
    wchar_t name[256] = {};
    GlobalGetAtomNameW(atom, name, 256);
    EXPECT_EQ(name, AtomName(L"Ctrl+Alt+Shift+Win+F13")) << "upper-case hex, the text as written";
    EXPECT_TRUE(CombinationTaken(probe.Get(), 0x7C));

    OnHotKey(atom);
    EXPECT_EQ(commands, (Commands{{kBuddyCommand, true}}));
    EXPECT_FALSE(InsideHotKey());
}

TEST_F(HotKeysTest, ACombinationAlreadyHeldGivesTheWarningAndKeepsTheFirstKey)
{
    AddHotKey(window.Get(), L"Ctrl+Alt+Shift+Win+F14", L"", kBuddyCommand);
    AddHotKey(window.Get(), L"win-shift-alt-ctrl f14", L"", kRecommendationCommand);
    const auto messages = TakeCapturedMessages();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].text, L"Could not register the hotkey 'win-shift-alt-ctrl f14' ... "
                                L"maybe it's already being used?");
    EXPECT_EQ(messages[0].style, static_cast<unsigned>(MB_ICONEXCLAMATION));
    EXPECT_EQ(AtomOf(L"win-shift-alt-ctrl f14"), 0) << "the refused key's atom goes with it";

    OnHotKey(AtomOf(L"Ctrl+Alt+Shift+Win+F14"));
    EXPECT_EQ(commands, (Commands{{kBuddyCommand, true}}));
}

TEST_F(HotKeysTest, OnlyCommands110And111RunAndAnAtomAlreadyMappedKeepsItsKey)
{
    AddHotKey(window.Get(), L"Ctrl+Alt+Shift+Win+F15", L"", kRecommendationCommand);
    AddHotKey(window.Get(), L"Ctrl+Alt+Shift+Win+F16", L"", kBuddyCommand);
    AddHotKey(window.Get(), L"Ctrl+Alt+Shift+Win+F17", L"", 112);
    const ATOM buddy = AtomOf(L"Ctrl+Alt+Shift+Win+F16");
    // Atom names ignore case: once the first registration is gone, the same
    // text in capitals registers under the same atom, and the map keeps the
    // first key.
    ASSERT_TRUE(UnregisterHotKey(window.Get(), buddy));
    AddHotKey(window.Get(), L"CTRL+ALT+SHIFT+WIN+F16", L"", kRecommendationCommand);
    EXPECT_TRUE(TakeCapturedMessages().empty());

    OnHotKey(AtomOf(L"Ctrl+Alt+Shift+Win+F17"));
    OnHotKey(0x1234);
    OnHotKey(static_cast<WPARAM>(0x10000) + buddy);
    EXPECT_TRUE(commands.empty());
    OnHotKey(buddy);
    OnHotKey(AtomOf(L"Ctrl+Alt+Shift+Win+F15"));
    EXPECT_EQ(commands, (Commands{{kBuddyCommand, true}, {kRecommendationCommand, true}}));
}

TEST_F(HotKeysTest, ClearingDeletesTheAtomsAndLeavesTheRegistrationToTheWindow)
{
    AddHotKey(window.Get(), L"Ctrl+Alt+Shift+Win+F18", L"", kBuddyCommand);
    // A refused duplicate takes a reference on the same atom and gives it back.
    AddHotKey(window.Get(), L"ctrl+alt+shift+win+f18", L"", kBuddyCommand);
    const ATOM atom = AtomOf(L"Ctrl+Alt+Shift+Win+F18");
    ASSERT_NE(atom, 0);

    ClearHotKeys();
    EXPECT_EQ(AtomOf(L"Ctrl+Alt+Shift+Win+F18"), 0);
    OnHotKey(atom);
    EXPECT_TRUE(commands.empty());
    EXPECT_TRUE(CombinationTaken(probe.Get(), 0x81)) << "no key is unregistered";
    window.Reset();
    EXPECT_FALSE(CombinationTaken(probe.Get(), 0x81)) << "the window's end drops it";
}
