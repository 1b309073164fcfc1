#include "ui/dialog.h"

#include "support/callback_boundary.h"
#include "support/this_module.h"

namespace cvas
{

INT_PTR CDialog::DoModal(HWND owner)
{
    return DialogBoxParamW(ThisModule(), MAKEINTRESOURCEW(TemplateId()), owner, &Procedure,
                           reinterpret_cast<LPARAM>(this));
}

bool CDialog::Create(HWND owner)
{
    m_modeless = true;
    HWND window = CreateDialogParamW(ThisModule(), MAKEINTRESOURCEW(TemplateId()), owner,
                                     &Procedure, reinterpret_cast<LPARAM>(this));
    if (window == nullptr)
        return false;
    ShowWindow(window, SW_SHOW);
    return true;
}

void CDialog::Destroy()
{
    if (Window() != nullptr && IsWindow(Window()))
        DestroyWindow(Window());
}

void CDialog::EndDialog(INT_PTR result)
{
    if (m_modeless)
        Destroy();
    else
        ::EndDialog(Window(), result);
}

bool CDialog::OnCommand(int id, int /*code*/)
{
    if (id == IDOK)
        OnOK();
    else if (id == IDCANCEL)
        OnCancel();
    else
        return false;
    return true;
}

void CDialog::OnOK()
{
    UpdateData(true);
    EndDialog(IDOK);
}

void CDialog::OnCancel()
{
    EndDialog(IDCANCEL);
}

INT_PTR CALLBACK CDialog::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    return GuardDialogProcedure(L"dialog", [&]() -> INT_PTR {
        if (message == WM_INITDIALOG)
            reinterpret_cast<CDialog*>(lParam)->Attach(window);
        auto* dialog = static_cast<CDialog*>(AttachedDialog(window));
        if (dialog == nullptr)
            return FALSE;
        if (message == WM_NCDESTROY)
        {
            // A modeless dialog that Esc or the close box destroyed is
            // not touched again through its old handle.
            dialog->Detach();
            return FALSE;
        }
        return dialog->Dispatch(message, wParam, lParam);
    });
}

} // namespace cvas
