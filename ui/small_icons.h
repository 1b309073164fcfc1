#pragma once
// This module's icons at 16 x 16, as lists, rows and buttons show them.

#include <windows.h>

#include <commctrl.h>

#include <initializer_list>

namespace cvas
{

// The icon, shared: the system keeps it and nothing frees it.
HICON SmallIcon(int iconId);
// An image list of these icons in their order (32-bit colour with mask,
// room for one, growing by five); the caller owns it.
HIMAGELIST MakeSmallImageList(std::initializer_list<int> iconIds);
// The icon as a button's image.
void SetButtonIcon(HWND button, int iconId);

} // namespace cvas
