#pragma once
// Hot keys as the user writes them ("Alt+Win+B", "ctrl f13"): modifier words
// and one key name joined by separators, read into a modifier set and a
// Windows virtual-key code.

#include <map>
#include <string>
#include <string_view>

namespace cvas
{

// The modifier bits of RegisterHotKey (MOD_ALT and so on), spelt out here so
// that the reading needs no Windows header.
constexpr unsigned kModAlt = 0x1;
constexpr unsigned kModControl = 0x2;
constexpr unsigned kModShift = 0x4;
constexpr unsigned kModWin = 0x8;

// Sets both outputs to 0, then reads the tokens between any of ",+- ":
// "alt", "control"/"ctrl", "shift", "win"/"windows" add their modifier; a
// key name sets the virtual key (a later one replaces an earlier one); any
// other token is ignored. Case does not matter.
void ParseHotKey(std::wstring_view text, unsigned& modifiers, unsigned& virtualKey);

// Lower-case key name to virtual-key code: the 109 keys that can be named,
// built on first use.
const std::map<std::wstring, unsigned>& KeyNameTable();
// Empties the table; the next use builds it again.
void ClearKeyNameTable();

} // namespace cvas
