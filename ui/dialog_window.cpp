#include "ui/dialog_window.h"

#include <vector>

namespace cvas
{

void CDataExchange::Text(int id, std::wstring& value)
{
    if (m_saving)
        value = m_window.ItemText(id);
    else
        m_window.SetItemText(id, value);
}

void CDataExchange::Check(int id, bool& value)
{
    if (m_saving)
        value = m_window.IsChecked(id);
    else
        m_window.SetChecked(id, value);
}

std::wstring CDialogWindow::ItemText(int id) const
{
    HWND item = Item(id);
    const int length = GetWindowTextLengthW(item);
    if (length <= 0)
        return {};
    std::vector<wchar_t> text(static_cast<std::size_t>(length) + 1);
    const int copied = GetWindowTextW(item, text.data(), length + 1);
    return std::wstring(text.data(), static_cast<std::size_t>(std::max(copied, 0)));
}

void CDialogWindow::SetItemText(int id, const std::wstring& text) const
{
    SetDlgItemTextW(m_window, id, text.c_str());
}

bool CDialogWindow::IsChecked(int id) const
{
    return IsDlgButtonChecked(m_window, id) == BST_CHECKED;
}

void CDialogWindow::SetChecked(int id, bool checked) const
{
    CheckDlgButton(m_window, id, checked ? BST_CHECKED : BST_UNCHECKED);
}

void CDialogWindow::EnableItem(int id, bool enabled) const
{
    EnableWindow(Item(id), enabled ? TRUE : FALSE);
}

void CDialogWindow::UpdateData(bool saving)
{
    CDataExchange exchange(*this, saving);
    DoDataExchange(exchange);
}

bool CDialogWindow::OnInitDialog()
{
    UpdateData(false);
    return true;
}

void CDialogWindow::Attach(HWND window)
{
    m_window = window;
    SetWindowLongPtrW(window, DWLP_USER, reinterpret_cast<LONG_PTR>(this));
}

void CDialogWindow::Detach()
{
    if (m_window != nullptr)
        SetWindowLongPtrW(m_window, DWLP_USER, 0);
    m_window = nullptr;
}

INT_PTR CDialogWindow::Dispatch(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message)
    {
    case WM_INITDIALOG:
        return OnInitDialog() ? TRUE : FALSE;
    case WM_COMMAND:
        return OnCommand(LOWORD(wParam), HIWORD(wParam)) ? TRUE : FALSE;
    case WM_NOTIFY: {
        LRESULT result = 0;
        if (!OnNotify(*reinterpret_cast<const NMHDR*>(lParam), result))
            return FALSE;
        SetWindowLongPtrW(m_window, DWLP_MSGRESULT, result);
        return TRUE;
    }
    default: {
        INT_PTR answer = FALSE;
        return OnMessage(message, wParam, lParam, answer) ? answer : FALSE;
    }
    }
}

CDialogWindow* AttachedDialog(HWND window)
{
    return reinterpret_cast<CDialogWindow*>(GetWindowLongPtrW(window, DWLP_USER));
}

} // namespace cvas
