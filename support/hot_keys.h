#pragma once
// System-wide hot keys of the plug-in's control window. Each key is
// registered under a global atom that is also its identifier, and kept in
// one map from that atom to the key; WM_HOTKEY runs the key's command. All
// of it runs on the thread that owns the control window.

#include <windows.h>

#include <functional>
#include <string>

namespace cvas
{

// The commands of the plug-in's two hot keys.
constexpr unsigned kBuddyCommand = 110;
constexpr unsigned kRecommendationCommand = 111;

class CHotKey
{
public:
    CHotKey(HWND window, unsigned command);
    // Deletes the atom. The registration is left to the window's end unless
    // the unregister-on-destroy flag is set, which nothing does.
    virtual ~CHotKey();
    CHotKey(const CHotKey&) = delete;
    CHotKey& operator=(const CHotKey&) = delete;

    // Registers the key that text names under a new atom; returns the result
    // of RegisterHotKey (0 for an empty text or when no atom could be made).
    BOOL SetHotKey(const std::wstring& text);

    HWND Window() const { return m_window; }
    const std::wstring& Text() const { return m_text; }
    const std::wstring& AtomName() const { return m_atomName; }
    ATOM Atom() const { return m_atom; }
    BOOL Registered() const { return m_registered; }
    unsigned Modifiers() const { return m_modifiers; }
    unsigned VirtualKey() const { return m_virtualKey; }
    const std::wstring& Description() const { return m_description; }
    void SetDescription(std::wstring description) { m_description = std::move(description); }
    unsigned Command() const { return m_command; }

private:
    HWND m_window;
    std::wstring m_text;
    std::wstring m_atomName;
    ATOM m_atom = 0;
    BOOL m_registered = 0;
    unsigned m_modifiers = 0;
    unsigned m_virtualKey = 0;
    std::wstring m_description;
    unsigned m_command;
    BOOL m_unregisterOnDestroy = 0;
};

// Registers text for window with the command to run; an empty text does
// nothing. A key that cannot be registered gives a warning box and is
// dropped. The plug-in passes its control window (PluginWindow()).
void AddHotKey(HWND window, const std::wstring& text, const std::wstring& description,
               unsigned command);

// The window's WM_HOTKEY handler (wParam is the id); the message counts as
// handled whatever the id, so the window returns 0.
void OnHotKey(WPARAM id);

// True while OnHotKey runs a command.
bool InsideHotKey();

// Empties the hot-key map, deleting every atom, and the key-name table.
void ClearHotKeys();

// What OnHotKey runs for the buddy (110) and recommendation (111) commands;
// other commands run nothing. The plug-in sets it before it adds its keys.
// Returns the previous handler.
using HotKeyCommandHandler = std::function<void(unsigned command)>;
HotKeyCommandHandler SetHotKeyCommandHandler(HotKeyCommandHandler handler);

} // namespace cvas
