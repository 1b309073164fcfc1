#include "ui/property_sheet.h"

#include "support/this_module.h"

namespace cvas
{

INT_PTR CPropertySheet::DoModal(HWND owner)
{
    std::vector<PROPSHEETPAGEW> pages;
    for (CPropertyPage* page : m_pages)
        pages.push_back(page->Describe());
    PROPSHEETHEADERW header{};
    header.dwSize = sizeof header;
    header.dwFlags = PSH_PROPSHEETPAGE | PSH_NOAPPLYNOW | (m_iconId != 0 ? PSH_USEICONID : 0);
    header.hwndParent = owner;
    header.hInstance = ThisModule();
    header.pszIcon = MAKEINTRESOURCEW(m_iconId);
    header.pszCaption = m_caption.c_str();
    header.nPages = static_cast<UINT>(pages.size());
    header.ppsp = pages.data();
    // A confirmed modal sheet answers a positive value, a cancelled one 0.
    return PropertySheetW(&header) > 0 ? IDOK : IDCANCEL;
}

void ShowSheetPage(HWND sheet, int index)
{
    SendMessageW(sheet, PSM_SETCURSEL, static_cast<WPARAM>(index), 0);
}

} // namespace cvas
