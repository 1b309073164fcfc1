#pragma once
// A picture of a window as it shows on the screen, saved as BMP or PNG.

#include <windows.h>

#include <string>

#include "tools/player/image_file.h"

namespace cvas::player
{

// The window, frame and children included, read back from the screen.
bool CaptureWindow(HWND window, CPicture& picture);

// A name ending in ".png" (any case) gives PNG, anything else BMP.
bool SavePicture(const std::wstring& path, const CPicture& picture);

} // namespace cvas::player
