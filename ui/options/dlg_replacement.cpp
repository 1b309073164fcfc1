#include "ui/options/dlg_replacement.h"

#include "resources/resource_ids.h"

namespace cvas
{
namespace
{

std::wstring TrimmedWhiteSpace(const std::wstring& text)
{
    constexpr wchar_t kWhiteSpace[] = L" \t\r\n\v\f";
    const std::size_t first = text.find_first_not_of(kWhiteSpace);
    if (first == std::wstring::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

} // namespace

CDlgReplacement::CDlgReplacement() : CDialog(IDD_REPLACEMENT) {}

void CDlgReplacement::DoDataExchange(CDataExchange& exchange)
{
    exchange.Text(IDC_REPLACE_THIS, thisText);
    exchange.Text(IDC_WITH_THIS, withThisText);
}

bool CDlgReplacement::OnInitDialog()
{
    CDialog::OnInitDialog();
    m_filled = true;
    const bool adding = thisText.empty();
    SetWindowTextW(Window(), adding ? L"Add Replacement" : L"Modify Replacement");
    EnableItem(IDOK, !adding);
    return true;
}

bool CDlgReplacement::OnCommand(int id, int code)
{
    if (id == IDC_REPLACE_THIS && code == EN_CHANGE)
    {
        if (!m_filled)
            return true;
        // Blanks alone are no text to replace; what OK takes is the text
        // as typed.
        UpdateData(true);
        thisText = TrimmedWhiteSpace(thisText);
        EnableItem(IDOK, !thisText.empty());
        return true;
    }
    return CDialog::OnCommand(id, code);
}

} // namespace cvas
