#pragma once
// A modeless one-line status window: the progress of a fetch of buddies.
// The thread that shows it does blocking work between updates and takes no
// messages meanwhile, so each new text is painted at once. Esc or the close
// box destroys it.

#include <string>

#include "ui/dialog.h"

namespace cvas
{

class CDlgStatus : public CDialog
{
public:
    CDlgStatus();
    ~CDlgStatus() override { Destroy(); }

    // Sets the label's text and repaints it at once.
    void SetProgressText(const std::wstring& text);
};

} // namespace cvas
