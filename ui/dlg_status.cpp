#include "ui/dlg_status.h"

#include "resources/resource_ids.h"

namespace cvas
{

CDlgStatus::CDlgStatus() : CDialog(IDD_STATUS) {}

void CDlgStatus::SetProgressText(const std::wstring& text)
{
    // No window (closed by the user) has no label.
    HWND label = Window() != nullptr ? Item(IDC_STATUS_TEXT) : nullptr;
    if (label == nullptr)
        return;
    SetWindowTextW(label, text.c_str());
    RedrawWindow(label, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
}

} // namespace cvas
