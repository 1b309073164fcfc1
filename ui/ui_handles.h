#pragma once
// Owners of the user-interface handles: a window, destroyed when its owner
// goes (a child that went with its parent is skipped), and an image list.

#include <windows.h>

#include <commctrl.h>

#include "support/unique_handle.h"

namespace cvas
{

struct CWindowTraits
{
    using Handle = HWND;
    static bool IsHandle(HWND window) { return window != nullptr; }
    static void Close(HWND window)
    {
        if (IsWindow(window))
            DestroyWindow(window);
    }
};

struct CImageListTraits
{
    using Handle = HIMAGELIST;
    static bool IsHandle(HIMAGELIST images) { return images != nullptr; }
    static void Close(HIMAGELIST images) { ImageList_Destroy(images); }
};

using CWindow = CUniqueHandle<CWindowTraits>;
using CImageList = CUniqueHandle<CImageListTraits>;

} // namespace cvas
