#include "buddies/dlg_buddies.h"

#include "resources/resource_ids.h"
#include "ui/small_icons.h"
#include "ui/wait_cursor.h"

#include <commctrl.h>

#include <stdexcept>

namespace cvas
{
namespace
{

// Posted to itself after the dialog shows: then the first buddy is selected.
constexpr UINT kSelectFirstMessage = WM_USER + 1;

// Made at the first construction and shared by every dialog after it, for
// the life of the process: it is never destroyed, so that no unloading of
// the module has to call into the common controls.
void MakeSharedImages()
{
    static const HIMAGELIST images = MakeSmallImageList({IDI_IN_LIBRARY});
    static_cast<void>(images);
}

} // namespace

CMyTabBuddyInfo::CMyTabBuddyInfo(IDispatch* automation, HWND playWindow)
{
    m_pages.push_back(std::make_shared<CDialogInfo>(
        IDD_BUDDY_TRACKS, std::make_unique<CTabBuddyTracks>(automation, playWindow),
        L"Recent Tracks"));
}

void CMyTabBuddyInfo::CreatePages(HWND tabControl)
{
    m_window = tabControl;
    int index = 0;
    for (const CountedHandle<CDialogInfo>& info : m_pages)
    {
        info->page->Create(tabControl);
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = const_cast<wchar_t*>(info->caption.c_str());
        TabCtrl_InsertItem(tabControl, index++, &item);
    }
    LayOut();
}

void CMyTabBuddyInfo::LayOut() const
{
    const int selected = TabCtrl_GetCurSel(m_window);
    RECT area{};
    GetClientRect(m_window, &area);
    TabCtrl_AdjustRect(m_window, FALSE, &area);
    for (std::size_t index = 0; index < m_pages.size(); ++index)
    {
        HWND page = m_pages[index]->page->Window();
        SetWindowPos(page, nullptr, area.left, area.top, area.right - area.left,
                     area.bottom - area.top, SWP_NOZORDER);
        ShowWindow(page, static_cast<int>(index) == selected ? SW_SHOW : SW_HIDE);
    }
}

void CMyTabBuddyInfo::SetBuddy(CountedHandle<CBuddy> buddy)
{
    m_buddy = std::move(buddy);
    for (const CountedHandle<CDialogInfo>& info : m_pages)
        if (auto* page = dynamic_cast<CTabBuddyBase*>(info->page.get()))
            page->SetBuddy(m_buddy);
}

CDlgBuddies::CDlgBuddies(CountedHandle<CBuddyInfo> list, IDispatch* automation, HWND playWindow)
    : CDialog(IDD_BUDDIES), m_tabs(automation, playWindow), m_list(std::move(list))
{
    MakeSharedImages();
}

bool CDlgBuddies::OnInitDialog()
{
    CDialog::OnInitDialog();
    HWND names = Item(IDC_BUDDY_NAMES);
    // Inserted at the count, so the rows keep the list's order (the sorted
    // style never reorders them) and a row's index is its buddy's.
    for (const CountedHandle<CBuddy>& buddy : m_list->buddies)
    {
        const auto count = SendMessageW(names, LB_GETCOUNT, 0, 0);
        SendMessageW(names, LB_INSERTSTRING, static_cast<WPARAM>(count),
                     reinterpret_cast<LPARAM>(buddy->name.c_str()));
    }
    m_tabs.CreatePages(Item(IDC_BUDDY_TABS));
    PostMessageW(Window(), kSelectFirstMessage, 0, 0);
    return true;
}

bool CDlgBuddies::OnMessage(UINT message, WPARAM, LPARAM, INT_PTR& answer)
{
    if (message == kSelectFirstMessage)
    {
        if (!m_list->buddies.empty())
        {
            SendMessageW(Item(IDC_BUDDY_NAMES), LB_SETCURSEL, 0, 0);
            SelectionChanged();
        }
        answer = TRUE;
        return true;
    }
    if (message == WM_CLOSE)
    {
        EndDialog(0);
        answer = TRUE;
        return true;
    }
    return false;
}

bool CDlgBuddies::OnCommand(int id, int code)
{
    if (id == IDC_BUDDY_NAMES && code == LBN_SELCHANGE)
    {
        SelectionChanged();
        return true;
    }
    return CDialog::OnCommand(id, code);
}

bool CDlgBuddies::OnNotify(const NMHDR& header, LRESULT& result)
{
    if (header.idFrom != IDC_BUDDY_TABS || header.code != TCN_SELCHANGE)
        return false;
    m_tabs.LayOut();
    result = 0;
    return true;
}

void CDlgBuddies::SelectionChanged()
{
    const auto index = static_cast<int>(SendMessageW(Item(IDC_BUDDY_NAMES), LB_GETCURSEL, 0, 0));
    if (index < 0)
    {
        m_selected.reset(); // the pages keep what they show
        return;
    }
    if (index == m_lastSelection)
        return;
    const CWaitCursor wait;
    if (static_cast<std::size_t>(index) >= m_list->buddies.size())
        throw std::out_of_range("invalid vector<T> subscript");
    m_selected = m_list->buddies[static_cast<std::size_t>(index)];
    // A buddy whose answer was an error raises here: the index is not kept,
    // and choosing the buddy again tries again.
    m_tabs.SetBuddy(m_selected);
    m_lastSelection = index;
}

} // namespace cvas
