#pragma once
// The pages of the buddy dialog's tab control, and the one page it has: a
// buddy's recent tracks, those in the user's own library marked with an
// icon and playable with a double click or the Play button.

#include <oaidl.h>
#include <windows.h>

#include <commctrl.h>

#include <memory>
#include <string>
#include <vector>

#include "buddies/buddy_info.h"
#include "ui/dialog.h"
#include "ui/ui_handles.h"

namespace cvas
{

// A page that shows something of the buddy the dialog has selected.
class CTabBuddyBase
{
public:
    virtual ~CTabBuddyBase() = default;
    virtual void SetBuddy(CountedHandle<CBuddy> buddy) = 0;
};

class CTabBuddyTracks : public CDialog, public CTabBuddyBase
{
public:
    // automation: where tracks are looked up in the library (may be null);
    // the caller keeps it alive. playWindow: where a play request of a
    // matched track is posted.
    CTabBuddyTracks(IDispatch* automation, HWND playWindow);

    // Shows the buddy's tracks, parsing its raw answer the first time (or
    // waiting for another thread's parse of it). An answer that begins with
    // "Error:" raises CBuddyFeedError, leaving the list empty.
    void SetBuddy(CountedHandle<CBuddy> buddy) override;

protected:
    bool OnInitDialog() override;
    bool OnCommand(int id, int code) override;
    bool OnNotify(const NMHDR& header, LRESULT& result) override;

private:
    const CRecentTrack* TrackAt(int row) const;
    // The image of a row the list asks for: the library icon or none.
    void AnswerImage(NMLVDISPINFOW& request) const;
    void Play() const;

    IDispatch* m_automation;
    HWND m_playWindow;
    CountedHandle<CBuddy> m_buddy;
    CImageList m_images;
};

// One page of the tab control: its template, its dialog and its caption.
class CDialogInfo
{
public:
    CDialogInfo(UINT templateId, std::unique_ptr<CDialog> page, std::wstring caption)
        : templateId(templateId), page(std::move(page)), caption(std::move(caption))
    {
    }
    virtual ~CDialogInfo() = default;

    UINT templateId;
    std::unique_ptr<CDialog> page;
    std::wstring caption;
};

} // namespace cvas
