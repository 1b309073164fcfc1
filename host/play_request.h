#pragma once
// Playing a file of the player's library, asked for by the buddy dialog.

#include <windows.h>

namespace cvas
{

// Puts the library file with this key into the player's play-request list
// and starts playing it. Returns the first failure of the player, if any.
HRESULT PlayLibraryFile(int key);

} // namespace cvas
