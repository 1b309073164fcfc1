#pragma once
// The buddy dialog: the buddies of a list on the left, and in a tab control
// on the right the selected buddy's recent tracks. It runs modally on the
// buddy thread; a play request goes to the plug-in's window by posted
// message.

#include <oaidl.h>

#include <vector>

#include "buddies/buddy_info.h"
#include "buddies/tab_buddy_tracks.h"
#include "ui/dialog.h"

namespace cvas
{

// The tab control of the buddy dialog and its pages.
class CMyTabBuddyInfo
{
public:
    CMyTabBuddyInfo(IDispatch* automation, HWND playWindow);

    // Makes each page a child of the tab control, with its tab, and lays
    // them out.
    void CreatePages(HWND tabControl);
    // Shows the selected tab's page over the display area and hides the
    // others.
    void LayOut() const;
    // Stores the buddy and hands it to every page that shows buddies.
    void SetBuddy(CountedHandle<CBuddy> buddy);

private:
    HWND m_window = nullptr;
    std::vector<CountedHandle<CDialogInfo>> m_pages;
    CountedHandle<CBuddy> m_buddy;
};

class CDlgBuddies : public CDialog
{
public:
    // automation: for the library matches of the tracks (may be null); the
    // caller keeps it alive. playWindow: the control window, which plays
    // what the user picks.
    CDlgBuddies(CountedHandle<CBuddyInfo> list, IDispatch* automation, HWND playWindow);

protected:
    bool OnInitDialog() override;
    bool OnCommand(int id, int code) override;
    bool OnNotify(const NMHDR& header, LRESULT& result) override;
    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, INT_PTR& answer) override;

private:
    void SelectionChanged();

    CMyTabBuddyInfo m_tabs;
    CountedHandle<CBuddyInfo> m_list;
    CountedHandle<CBuddy> m_selected;
    int m_lastSelection = -1;
};

} // namespace cvas
