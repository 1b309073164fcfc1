#pragma once
// A modal property sheet of pages that its owner keeps: a caption, an icon of
// this module and no "Apply" button.

#include <windows.h>

#include <string>
#include <vector>

#include "ui/property_page.h"

namespace cvas
{

class CPropertySheet
{
public:
    explicit CPropertySheet(std::wstring caption) : m_caption(std::move(caption)) {}
    CPropertySheet(const CPropertySheet&) = delete;
    CPropertySheet& operator=(const CPropertySheet&) = delete;
    virtual ~CPropertySheet() = default;

    // Pages show in the order they are added; the sheet does not own them.
    void AddPage(CPropertyPage& page) { m_pages.push_back(&page); }
    void SetIconId(int iconId) { m_iconId = iconId; }
    std::size_t PageCount() const { return m_pages.size(); }

    // Runs the sheet; IDOK when it was confirmed, else IDCANCEL.
    INT_PTR DoModal(HWND owner);

private:
    std::wstring m_caption;
    int m_iconId = 0;
    std::vector<CPropertyPage*> m_pages;
};

// Shows the page at index in the sheet, as a click on its tab would.
void ShowSheetPage(HWND sheet, int index);

} // namespace cvas
