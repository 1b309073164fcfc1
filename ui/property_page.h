#pragma once
// One page of a property sheet, made from a template of this module, whose
// tab caption is the template's caption. A change of tab takes the controls'
// values into the members without checking them; "OK" of the sheet calls
// OnApply of every page that was shown, and a page that refuses keeps the
// sheet open.

#include <windows.h>

#include <prsht.h>

#include "ui/dialog_window.h"

namespace cvas
{

class CPropertyPage : public CDialogWindow
{
public:
    explicit CPropertyPage(int templateId) : CDialogWindow(templateId) {}

    // The page's description for the sheet.
    PROPSHEETPAGEW Describe();
    // The sheet's window, once the page exists.
    HWND Sheet() const { return GetParent(Window()); }

protected:
    bool OnNotify(const NMHDR& header, LRESULT& result) override;
    // The "OK" of the sheet: takes the controls' values; false keeps the
    // sheet open.
    virtual bool OnApply();

private:
    static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
};

} // namespace cvas
