#include "ui/submitted_list.h"

#include "resources/resource_ids.h"
#include "support/this_module.h"
#include "ui/small_icons.h"

#include <iterator>

namespace cvas
{
namespace
{

struct ColumnSpec
{
    const wchar_t* header;
    int width;
};

constexpr ColumnSpec kColumns[] = {
    {L"When Submitted", 160}, {L"When Played", 160}, {L"Artist", 200},
    {L"Album", 200},          {L"Name", 200},        {L"last.fm response", 200},
};

// The image index is the success flag: 0 failed, 1 succeeded.
CImageList MakeImages()
{
    return CImageList(MakeSmallImageList({IDI_SUBMIT_FAILED, IDI_SUBMIT_OK}));
}

} // namespace

bool CMySubmittedListCtrl::Create(DWORD style, const RECT& rect, HWND parent, UINT id)
{
    const INITCOMMONCONTROLSEX controls{sizeof(controls), ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&controls);
    CWindow window(CreateWindowExW(0, WC_LISTVIEWW, L"", style, rect.left, rect.top,
                                   rect.right - rect.left, rect.bottom - rect.top, parent,
                                   reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)), ThisModule(),
                                   nullptr));
    if (!window)
        return false;

    m_images = MakeImages();
    ListView_SetImageList(window.Get(), m_images.Get(), LVSIL_SMALL);
    for (int index = 0; index < static_cast<int>(std::size(kColumns)); ++index)
    {
        LVCOLUMNW column{};
        column.mask = LVCF_FMT | LVCF_WIDTH | LVCF_TEXT;
        column.fmt = LVCFMT_LEFT;
        column.cx = kColumns[index].width;
        column.pszText = const_cast<wchar_t*>(kColumns[index].header);
        ListView_InsertColumn(window.Get(), index, &column);
    }
    m_window = std::move(window);
    return true;
}

void CMySubmittedListCtrl::AddSubmittedRow(bool succeeded, const CTrackRecord& record)
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    AddSubmittedRow(succeeded, record, now);
}

void CMySubmittedListCtrl::AddSubmittedRow(bool succeeded, const CTrackRecord& record,
                                           const SYSTEMTIME& submitted)
{
    if (!m_window)
        return;
    std::wstring when = FormatTrackTime(submitted.wYear, submitted.wMonth, submitted.wDay,
                                        submitted.wHour, submitted.wMinute, submitted.wSecond);
    LVITEMW item{};
    item.mask = LVIF_TEXT | LVIF_IMAGE;
    item.iItem = 0;
    item.pszText = when.data();
    item.iImage = succeeded ? 1 : 0;
    const int row = ListView_InsertItem(m_window.Get(), &item);
    if (row < 0)
        return;
    const std::wstring* texts[] = {&record.Time(), &record.Artist(), &record.Album(),
                                   &record.Name(), &record.Extra()};
    for (int column = 1; column <= static_cast<int>(std::size(texts)); ++column)
    {
        ListView_SetItemText(m_window.Get(), row, column,
                             const_cast<wchar_t*>(texts[column - 1]->c_str()));
    }
}

CRowBatch::CRowBatch(const CMySubmittedListCtrl& list, std::size_t rows)
{
    if (rows < 2 || list.Window() == nullptr)
        return;
    m_held = list.Window();
    SendMessageW(m_held, WM_SETREDRAW, FALSE, 0);
}

CRowBatch::~CRowBatch()
{
    if (m_held == nullptr)
        return;
    SendMessageW(m_held, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(m_held, nullptr, FALSE);
}

} // namespace cvas
