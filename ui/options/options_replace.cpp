#include "resources/resource_ids.h"
#include "support/message_box.h"
#include "ui/list_view.h"
#include "ui/options/dlg_replacement.h"
#include "ui/options/options_pages.h"
#include "ui/small_icons.h"

namespace cvas
{
namespace
{

constexpr int kColumnWidth = 100;
// Posted to the page by a double click: Modify runs once the list has done
// with the click, not inside its notification.
constexpr UINT kModifyMessage = WM_APP + 1;
constexpr int kRowButtons[] = {IDC_DELETE, IDC_MODIFY, IDC_MOVE_UP, IDC_MOVE_DOWN};

} // namespace

COptionsReplace::COptionsReplace() : CPropertyPage(IDD_OPTIONS_REPLACE) {}

bool COptionsReplace::OnInitDialog()
{
    CPropertyPage::OnInitDialog();
    const CListView list(Item(IDC_REPLACEMENTS));
    list.SetFullRowSelect();
    list.AddColumn(0, L"This", kColumnWidth);
    list.AddColumn(1, L"With This", kColumnWidth);
    for (const CReplacement& replacement : replacements)
    {
        const int row = list.InsertRow(list.Count(), replacement.lhs);
        list.SetText(row, 1, replacement.rhs);
    }
    if (list.Count() > 0)
    {
        list.Select(0);
        EnableItem(IDC_DELETE, true);
        EnableItem(IDC_MODIFY, true);
        EnableItem(IDC_MOVE_UP, false);
        EnableItem(IDC_MOVE_DOWN, list.Count() > 1);
    }
    else
    {
        for (int button : kRowButtons)
            EnableItem(button, false);
    }
    SetButtonIcon(Item(IDC_MOVE_UP), IDI_MOVE_UP);
    SetButtonIcon(Item(IDC_MOVE_DOWN), IDI_MOVE_DOWN);
    return true;
}

void COptionsReplace::ShowButtonsFor(int row) const
{
    if (row < 0)
    {
        for (int button : kRowButtons)
            EnableItem(button, false);
        return;
    }
    const int count = CListView(Item(IDC_REPLACEMENTS)).Count();
    EnableItem(IDC_DELETE, true);
    EnableItem(IDC_MODIFY, true);
    EnableItem(IDC_MOVE_UP, count >= 2 && row >= 1);
    EnableItem(IDC_MOVE_DOWN, count >= 2 && row + 1 != count);
}

bool COptionsReplace::OnCommand(int id, int code)
{
    if (code != BN_CLICKED)
        return false;
    switch (id)
    {
    case IDC_ADD:
        Add();
        return true;
    case IDC_MODIFY:
        Modify();
        return true;
    case IDC_DELETE:
        Delete();
        return true;
    case IDC_MOVE_UP:
        Move(-1);
        return true;
    case IDC_MOVE_DOWN:
        Move(1);
        return true;
    default:
        return false;
    }
}

bool COptionsReplace::OnNotify(const NMHDR& header, LRESULT& result)
{
    if (header.idFrom != IDC_REPLACEMENTS || (header.code != NM_CLICK && header.code != NM_DBLCLK))
        return CPropertyPage::OnNotify(header, result);
    // The row under the click, from the point the list reports with it.
    const auto& click = reinterpret_cast<const NMITEMACTIVATE&>(header);
    const int row = CListView(Item(IDC_REPLACEMENTS)).RowAt(click.ptAction);
    if (header.code == NM_CLICK)
        ShowButtonsFor(row);
    else if (row >= 0)
        PostMessageW(Window(), kModifyMessage, 0, 0);
    result = 0;
    return true;
}

bool COptionsReplace::OnMessage(UINT message, WPARAM, LPARAM, INT_PTR& answer)
{
    if (message != kModifyMessage)
        return false;
    Modify();
    answer = TRUE;
    return true;
}

void COptionsReplace::Add()
{
    CDlgReplacement dialog;
    if (dialog.DoModal(Window()) != IDOK)
        return;
    replacements.push_back({dialog.thisText, dialog.withThisText});
    const CListView list(Item(IDC_REPLACEMENTS));
    const int row = list.InsertRow(list.Count(), dialog.thisText);
    list.SetText(row, 1, dialog.withThisText);
    list.Select(row);
    ShowButtonsFor(row);
}

void COptionsReplace::Modify()
{
    const CListView list(Item(IDC_REPLACEMENTS));
    const int row = list.FirstSelected();
    // The entry at the row's position in the page's list, which after a
    // delete or a move on this visit may be another than the row shows: the
    // list itself is rebuilt from the rows only by OK. Kept so on purpose.
    if (row < 0 || static_cast<std::size_t>(row) >= replacements.size())
        return;
    CReplacement& entry = replacements[static_cast<std::size_t>(row)];
    CDlgReplacement dialog;
    dialog.thisText = entry.lhs;
    dialog.withThisText = entry.rhs;
    if (dialog.DoModal(Window()) != IDOK)
        return;
    entry = {dialog.thisText, dialog.withThisText};
    list.SetText(row, 0, entry.lhs);
    list.SetText(row, 1, entry.rhs);
}

void COptionsReplace::Delete()
{
    const CListView list(Item(IDC_REPLACEMENTS));
    const int row = list.FirstSelected();
    if (row < 0 || AskMessage(MB_YESNO, L"Are you sure you want to delete this item?") != IDYES)
        return;
    list.DeleteRow(row);
    if (list.Count() > 0)
    {
        // The buttons stay as they were for the deleted row.
        list.Select(row > 0 ? row - 1 : 0);
    }
    else
    {
        for (int button : kRowButtons)
            EnableItem(button, false);
    }
}

void COptionsReplace::Move(int step)
{
    const CListView list(Item(IDC_REPLACEMENTS));
    const int row = list.FirstSelected();
    const int target = row + step;
    if (row < 0 || target < 0 || target >= list.Count())
        return;
    const std::wstring thisText = list.Text(row, 0);
    const std::wstring withThisText = list.Text(row, 1);
    list.DeleteRow(row);
    const int moved = list.InsertRow(target, thisText);
    list.SetText(moved, 1, withThisText);
    list.Select(moved);
    ShowButtonsFor(moved);
}

bool COptionsReplace::OnApply()
{
    const CListView list(Item(IDC_REPLACEMENTS));
    replacements.clear();
    for (int row = 0; row < list.Count(); ++row)
        replacements.push_back({list.Text(row, 0), list.Text(row, 1)});
    return true;
}

} // namespace cvas
