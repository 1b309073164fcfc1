#include "resources/resource_ids.h"
#include "support/message_box.h"
#include "ui/options/options_pages.h"
#include "ui/property_sheet.h"

namespace cvas
{

COptionsMain::COptionsMain() : CPropertyPage(IDD_OPTIONS_MAIN) {}

void COptionsMain::DoDataExchange(CDataExchange& exchange)
{
    exchange.Check(IDC_ENABLED, enabled);
    exchange.Check(IDC_REATTEMPT, reattempt);
    exchange.Check(IDC_RUN_AT_START, m_spare);
    exchange.Check(IDC_RUN_AT_START, runAtStart);
    exchange.Check(IDC_SUBMIT_AT_START, submitAtStart);
    exchange.Text(IDC_USER_NAME, userName);
    exchange.Text(IDC_PASSWORD, password);
}

bool COptionsMain::OnApply()
{
    UpdateData(true);
    if (enabled && (userName.empty() || password.empty()))
    {
        InfoMessage(userName.empty() ? L"last.fm support enabled but no username specified!"
                                     : L"last.fm support enabled but no password specified!");
        ShowSheetPage(Sheet(), 0);
        return false;
    }
    // Confirming with scrobbling off is allowed: the user is only warned.
    if (!enabled)
        InfoMessage(L"WARNING\n\nlast.fm support not activated!");
    return true;
}

} // namespace cvas
