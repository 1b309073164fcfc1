#include "ui/small_icons.h"

#include "support/this_module.h"

namespace cvas
{
namespace
{

constexpr int kIconSize = 16;

} // namespace

HICON SmallIcon(int iconId)
{
    return static_cast<HICON>(LoadImageW(ThisModule(), MAKEINTRESOURCEW(iconId), IMAGE_ICON,
                                         kIconSize, kIconSize, LR_SHARED));
}

HIMAGELIST MakeSmallImageList(std::initializer_list<int> iconIds)
{
    HIMAGELIST images = ImageList_Create(kIconSize, kIconSize, ILC_COLOR32 | ILC_MASK, 1, 5);
    for (const int iconId : iconIds)
        ImageList_AddIcon(images, SmallIcon(iconId));
    return images;
}

void SetButtonIcon(HWND button, int iconId)
{
    SendMessageW(button, BM_SETIMAGE, IMAGE_ICON, reinterpret_cast<LPARAM>(SmallIcon(iconId)));
}

} // namespace cvas
