#pragma once
// PluginMode lives in the registry under the plug-in's key below the
// player's key in HKEY_LOCAL_MACHINE; the older player has a key of its own.

#include <string>

namespace cvas
{

constexpr wchar_t kPluginKey[] = L"Software\\Ostrana\\Corvina 14\\Plugins\\Interface\\last.fm";
constexpr wchar_t kOlderHostPluginKey[] =
    L"Software\\Ostrana\\Belvox 12\\Plugins\\Interface\\last.fm";

// The folder of the plug-in's own module file, with a backslash at the end.
std::wstring ModuleFolder();

// Whether a file (not a folder) named "BX12.XML" lies in the folder, which
// marks the older player.
bool IsOlderHostFolder(const std::wstring& moduleFolder);

// The plug-in key for this process, decided once from the module's folder.
const wchar_t* PluginRegistryKey();

// Off when the key does not open.
bool ReadPluginMode();
// Left unwritten when the key does not open; returns whether it was written.
bool WritePluginMode(bool on);

} // namespace cvas
