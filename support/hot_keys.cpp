#include "support/hot_keys.h"

#include "support/counted_handle.h"
#include "support/hot_key_names.h"
#include "support/message_box.h"
#include "support/wide_format.h"

#include <cstdint>
#include <map>
#include <utility>

namespace cvas
{

static_assert(kModAlt == MOD_ALT && kModControl == MOD_CONTROL && kModShift == MOD_SHIFT &&
              kModWin == MOD_WIN);

namespace
{

std::map<ATOM, CountedHandle<CHotKey>> g_hotKeys;
HotKeyCommandHandler g_commandHandler;
// Read by OnHotKey; nothing sets it, so every registered key is live.
bool g_hotKeysSuppressed = false;
bool g_insideHotKey = false;

class CInsideHotKey
{
public:
    CInsideHotKey() { g_insideHotKey = true; }
    ~CInsideHotKey() { g_insideHotKey = false; }
    CInsideHotKey(const CInsideHotKey&) = delete;
    CInsideHotKey& operator=(const CInsideHotKey&) = delete;
};

} // namespace

CHotKey::CHotKey(HWND window, unsigned command) : m_window(window), m_command(command) {}

CHotKey::~CHotKey()
{
    // A destroyed key deletes its atom and nothing more: the window's end
    // drops its registration.
    if (m_unregisterOnDestroy)
        UnregisterHotKey(m_window, m_atom);
    if (m_atom != 0)
        GlobalDeleteAtom(m_atom);
}

BOOL CHotKey::SetHotKey(const std::wstring& text)
{
    if (m_unregisterOnDestroy)
    {
        UnregisterHotKey(m_window, m_atom);
        m_unregisterOnDestroy = 0;
    }
    m_registered = 0;
    m_text = text;
    if (m_text.empty())
        return m_registered;

    ParseHotKey(m_text, m_modifiers, m_virtualKey);
    // A key set again on the same object takes a new atom; the earlier key
    // stays registered and its atom is not deleted.
    const auto windowValue =
        static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(m_window));
    m_atomName = FormatWide(32, L"%llX", windowValue) + L"_HK_" + m_text;
    m_atom = GlobalAddAtomW(m_atomName.c_str());
    if (m_atom == 0)
        return m_registered;
    m_registered = RegisterHotKey(m_window, m_atom, m_modifiers, m_virtualKey);
    return m_registered;
}

void AddHotKey(HWND window, const std::wstring& text, const std::wstring& description,
               unsigned command)
{
    if (text.empty())
        return;
    auto hotKey = std::make_shared<CHotKey>(window, command);
    if (!hotKey->SetHotKey(text))
    {
        WarningMessage(L"Could not register the hotkey '%ls' ... maybe it's already being used?",
                       text.c_str());
        return;
    }
    hotKey->SetDescription(description);
    // An entry already under this atom stays; the new key is released.
    g_hotKeys.emplace(hotKey->Atom(), std::move(hotKey));
}

void OnHotKey(WPARAM id)
{
    if (g_hotKeysSuppressed || id > 0xFFFF)
        return;
    const auto found = g_hotKeys.find(static_cast<ATOM>(id));
    if (found == g_hotKeys.end())
        return;
    const unsigned command = found->second->Command();
    CInsideHotKey inside;
    if ((command == kBuddyCommand || command == kRecommendationCommand) && g_commandHandler)
        g_commandHandler(command);
}

bool InsideHotKey()
{
    return g_insideHotKey;
}

void ClearHotKeys()
{
    g_hotKeys.clear();
    ClearKeyNameTable();
}

HotKeyCommandHandler SetHotKeyCommandHandler(HotKeyCommandHandler handler)
{
    return std::exchange(g_commandHandler, std::move(handler));
}

} // namespace cvas
