#include "ui/list_view.h"

#include <algorithm>
#include <vector>

namespace cvas
{

void CListView::SetFullRowSelect() const
{
    ListView_SetExtendedListViewStyleEx(m_window, LVS_EX_FULLROWSELECT, LVS_EX_FULLROWSELECT);
}

void CListView::AddColumn(int index, const std::wstring& caption, int widthPixels) const
{
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
    column.pszText = const_cast<wchar_t*>(caption.c_str());
    column.cx = widthPixels;
    column.iSubItem = index;
    ListView_InsertColumn(m_window, index, &column);
}

int CListView::Count() const
{
    return ListView_GetItemCount(m_window);
}

int CListView::InsertRow(int index, const std::wstring& text) const
{
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = index;
    item.pszText = const_cast<wchar_t*>(text.c_str());
    return ListView_InsertItem(m_window, &item);
}

void CListView::SetText(int row, int column, const std::wstring& text) const
{
    ListView_SetItemText(m_window, row, column, const_cast<wchar_t*>(text.c_str()));
}

std::wstring CListView::Text(int row, int column) const
{
    // The list gives no length: read into a buffer that grows until the
    // text fits with room to spare.
    for (std::size_t size = 256;; size *= 4)
    {
        std::vector<wchar_t> buffer(size);
        LVITEMW item{};
        item.iSubItem = column;
        item.pszText = buffer.data();
        item.cchTextMax = static_cast<int>(size);
        const auto length = static_cast<std::size_t>(SendMessageW(
            m_window, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item)));
        if (length + 1 < size || size >= (1u << 24))
            return std::wstring(buffer.data(), std::min(length, size - 1));
    }
}

void CListView::DeleteRow(int row) const
{
    ListView_DeleteItem(m_window, row);
}

void CListView::Select(int row) const
{
    ListView_SetItemState(m_window, -1, 0, LVIS_SELECTED | LVIS_FOCUSED);
    ListView_SetItemState(m_window, row, LVIS_SELECTED | LVIS_FOCUSED,
                          LVIS_SELECTED | LVIS_FOCUSED);
    ListView_EnsureVisible(m_window, row, FALSE);
}

int CListView::FirstSelected() const
{
    return ListView_GetNextItem(m_window, -1, LVNI_SELECTED);
}

int CListView::RowAt(POINT clientPoint) const
{
    LVHITTESTINFO hit{};
    hit.pt = clientPoint;
    const int row = ListView_SubItemHitTest(m_window, &hit);
    return (hit.flags & LVHT_ONITEM) != 0 ? row : -1;
}

} // namespace cvas
