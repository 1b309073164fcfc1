#pragma once
// A modal dialog made from a template of this module: "OK" takes the
// controls' values into the members and ends it with IDOK, "Cancel" (and
// Esc) ends it with IDCANCEL.

#include "ui/dialog_window.h"

namespace cvas
{

class CDialog : public CDialogWindow
{
public:
    explicit CDialog(int templateId) : CDialogWindow(templateId) {}

    // Runs the dialog modally; IDOK, IDCANCEL, or -1 when it could not be made.
    INT_PTR DoModal(HWND owner);
    // Makes the dialog modeless and shows it; false when it could not be made.
    bool Create(HWND owner);
    // Destroys a modeless dialog (nothing when there is none, or when it
    // was destroyed already: the dialog forgets its window when it goes).
    void Destroy();

protected:
    bool OnCommand(int id, int code) override;
    virtual void OnOK();
    virtual void OnCancel();
    // Ends a modal run; a modeless dialog is destroyed instead.
    void EndDialog(INT_PTR result);

private:
    bool m_modeless = false;
    static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
};

} // namespace cvas
