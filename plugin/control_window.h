#pragma once
// The control's own window inside the player, and what its messages do.

#include <windows.h>

namespace cvas
{

// A child of parent at position; null when it could not be made.
HWND CreateControlWindow(HWND parent, const RECT& position);

// The "&Options" button and the submitted-tracks list, made by Init.
void CreateChildWindows(HWND window);

// Opening the options sheet: the "&Options" button and a first start come
// here (the sheet arrives with the options of a later step).
void OpenOptions(bool firstStart);

} // namespace cvas
