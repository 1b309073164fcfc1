// The pages that only exchange texts and check boxes: Filter, Buddy System
// and Advanced.
#include "resources/resource_ids.h"
#include "ui/options/options_pages.h"

namespace cvas
{

COptionsAdvancedFilter::COptionsAdvancedFilter() : CPropertyPage(IDD_OPTIONS_FILTER) {}

void COptionsAdvancedFilter::DoDataExchange(CDataExchange& exchange)
{
    exchange.Text(IDC_FILTER, filter);
}

COptionsBuddy::COptionsBuddy() : CPropertyPage(IDD_OPTIONS_BUDDY) {}

void COptionsBuddy::DoDataExchange(CDataExchange& exchange)
{
    exchange.Check(IDC_BUDDY_ENABLED, buddyEnabled);
    exchange.Text(IDC_BUDDY_HOTKEY, buddyHotkey);
}

bool COptionsBuddy::OnInitDialog()
{
    CPropertyPage::OnInitDialog();
    EnableItem(IDC_BUDDY_HOTKEY, buddyEnabled);
    return true;
}

bool COptionsBuddy::OnCommand(int id, int code)
{
    if (id != IDC_BUDDY_ENABLED || code != BN_CLICKED)
        return false;
    UpdateData(true);
    EnableItem(IDC_BUDDY_HOTKEY, buddyEnabled);
    return true;
}

COptionsAdvanced::COptionsAdvanced() : CPropertyPage(IDD_OPTIONS_ADVANCED) {}

void COptionsAdvanced::DoDataExchange(CDataExchange& exchange)
{
    exchange.Text(IDC_ARTIST, artist);
    exchange.Text(IDC_ALBUM, album);
    exchange.Text(IDC_NAME, name);
}

} // namespace cvas
