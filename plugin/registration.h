#pragma once
// Registration of the plug-in: as a COM control (class, ProgIDs, type
// library) and as an interface plug-in of the player, by the values the
// player reads under the plug-in's key.

#include <windows.h>

#include <string>

namespace cvas
{

constexpr wchar_t kProgId[] = L"CVAudioScrobbler.Interface.1";
constexpr wchar_t kVersionIndependentProgId[] = L"CVAudioScrobbler.Interface";
constexpr wchar_t kClassName[] = L"Interface Class";
constexpr int kToolboxBitmapId = 102;

HRESULT RegisterServer();
// Removes the COM registration only; the player's plug-in key stays.
HRESULT UnregisterServer();

// The ProductVersion read at registration, or "UNABLE TO QUERY VERSION"
// when the plug-in key could not be made.
const std::wstring& ModuleVersionText();

} // namespace cvas
