#include "ui/property_page.h"

#include "support/callback_boundary.h"
#include "support/this_module.h"

namespace cvas
{

PROPSHEETPAGEW CPropertyPage::Describe()
{
    PROPSHEETPAGEW page{};
    page.dwSize = sizeof page;
    page.dwFlags = PSP_DEFAULT;
    page.hInstance = ThisModule();
    page.pszTemplate = MAKEINTRESOURCEW(TemplateId());
    page.pfnDlgProc = &Procedure;
    page.lParam = reinterpret_cast<LPARAM>(this);
    return page;
}

bool CPropertyPage::OnNotify(const NMHDR& header, LRESULT& result)
{
    if (header.hwndFrom != Sheet())
        return false;
    switch (header.code)
    {
    case PSN_KILLACTIVE:
        UpdateData(true);
        result = FALSE; // leaving a page checks nothing
        return true;
    case PSN_APPLY:
        result = OnApply() ? PSNRET_NOERROR : PSNRET_INVALID_NOCHANGEPAGE;
        return true;
    default:
        return false;
    }
}

bool CPropertyPage::OnApply()
{
    UpdateData(true);
    return true;
}

INT_PTR CALLBACK CPropertyPage::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    return GuardDialogProcedure(L"property page", [&]() -> INT_PTR {
        if (message == WM_INITDIALOG)
        {
            const auto* page = reinterpret_cast<const PROPSHEETPAGEW*>(lParam);
            reinterpret_cast<CPropertyPage*>(page->lParam)->Attach(window);
        }
        CDialogWindow* page = AttachedDialog(window);
        return page != nullptr
                   ? static_cast<CPropertyPage*>(page)->Dispatch(message, wParam, lParam)
                   : FALSE;
    });
}

} // namespace cvas
