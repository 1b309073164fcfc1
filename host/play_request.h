#pragma once
// Playing a file of the player's library, asked for by the buddy dialog.

#include <windows.h>

namespace cvas
{

// Posted to the control window, which plays the file; wParam the library
// key of the file to play (never 0).
constexpr UINT kPlayRequestMessage = WM_USER + 6;

// Puts the library file with this key into the player's play-request list
// and starts playing it. Returns the first failure of the player, if any.
HRESULT PlayLibraryFile(int key);

} // namespace cvas
