#pragma once
// Owners of the user-interface handles: a window, destroyed when its owner
// goes (a child that went with its parent is skipped), an image list and a
// font.

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

struct CFontTraits
{
    using Handle = HFONT;
    static bool IsHandle(HFONT font) { return font != nullptr; }
    static void Close(HFONT font) { DeleteObject(font); }
};

using CWindow = CUniqueHandle<CWindowTraits>;
using CFont = CUniqueHandle<CFontTraits>;
using CImageList = CUniqueHandle<CImageListTraits>;

} // namespace cvas
