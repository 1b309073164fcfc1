#pragma once
// The dialog that asks for one replacement: the text to replace and the text
// to put in its place. Empty at first it reads "Add Replacement" and its OK
// waits for a text to replace; filled in, "Modify Replacement".

#include <string>

#include "ui/dialog.h"

namespace cvas
{

class CDlgReplacement : public CDialog
{
public:
    CDlgReplacement();

    std::wstring thisText;
    std::wstring withThisText;

protected:
    void DoDataExchange(CDataExchange& exchange) override;
    bool OnInitDialog() override;
    bool OnCommand(int id, int code) override;

private:
    // Set once the controls hold both texts: the change that filling edit
    // 216 causes must not read edit 223 while it is still empty.
    bool m_filled = false;
};

} // namespace cvas
