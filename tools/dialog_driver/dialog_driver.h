#pragma once
// Drives modal dialogs as a person would, from inside their own message
// loop: a script of steps, one per tick of a thread timer, each acting on
// the windows as they are then (clicks and key presses are posted, so each
// is handled before the next step runs). When the script is done the
// driver waits a bounded number of ticks for the dialogs to close, then
// cancels whatever is still open and reports it: a test never hangs.

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

namespace cvas::tools
{

class CDialogDriver
{
public:
    using Step = std::function<void()>;

    void Then(Step step) { m_steps.push_back(std::move(step)); }
    // Runs the script while open() runs (open shows the modal dialogs and
    // returns when they are closed). Returns whether every step ran and
    // everything closed by itself.
    bool Run(const std::function<void()>& open);
    // After Run: whether every step ran, and whether the driver had to
    // cancel what was still open.
    bool AllStepsRan() const { return m_next == m_steps.size(); }
    bool Cancelled() const { return m_cancelled; }
    bool Finished() const { return AllStepsRan() && !m_cancelled; }

private:
    static void CALLBACK Tick(HWND, UINT, UINT_PTR, DWORD);

    std::vector<Step> m_steps;
    std::size_t m_next = 0;
    int m_idleTicks = 0;
    bool m_cancelled = false;
};

// The top-level window of this thread with the caption, or null.
HWND FindDialog(const std::wstring& caption);
// The sheet's current page and its index.
HWND CurrentPage(HWND sheet);
int CurrentPageIndex(HWND sheet);
// A click on a button or check box of the dialog (posted).
void Click(HWND dialog, int id);
// An edit's text, set as if typed (its change notification follows).
void Type(HWND dialog, int id, const std::wstring& text);
std::wstring TextOf(HWND dialog, int id);
bool IsEnabled(HWND dialog, int id);
bool IsChecked(HWND dialog, int id);
// A left click, or a double click, on a row of a list view (posted).
void ClickRow(HWND list, int row, bool twice = false);
// A left click on the list's empty area below its rows (posted).
void ClickBelowRows(HWND list);

} // namespace cvas::tools
