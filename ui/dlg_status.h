#pragma once
// A modeless one-line status window: the progress of a fetch of buddies.
// Its thread handles its messages while it waits for the service, so that it
// answers and paints; each new text is painted at once all the same.
//
// Esc or the close box destroys it, and that is all: the fetch goes on and
// its list shows when it is done. The user asked for that list with the hot
// key and closed only the progress; a fetch cut short would show no list or
// one with buddies missing, and the list's dialog closes with one key.
// Once destroyed, the window is never touched again: a new text, and
// Destroy(), do nothing.

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
