#pragma once
// The control's window, which the plug-in's timer, posted messages and hot
// keys use. Touched on the player's UI thread only.

#include <windows.h>

namespace cvas
{

HWND PluginWindow();
void SetPluginWindow(HWND window);

} // namespace cvas
