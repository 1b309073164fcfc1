#pragma once
// The list of submitted tracks in the plug-in's window: a report-view list
// with one row per submission attempt, newest on top, each marked with its
// outcome. Used on the player's UI thread only.

#include <windows.h>

#include <commctrl.h>

#include <cstddef>

#include "scrobbler/queue/track_record.h"
#include "ui/ui_handles.h"

namespace cvas
{

// The style the plug-in gives its list.
constexpr DWORD kSubmittedListStyle = WS_CHILD | WS_VISIBLE | WS_TABSTOP | LVS_REPORT |
                                      LVS_SHOWSELALWAYS | LVS_SHAREIMAGELISTS | LVS_AUTOARRANGE;

class CMySubmittedListCtrl
{
public:
    // Makes the list as a child of parent with its images and six columns;
    // false when the window cannot be made. Called once.
    bool Create(DWORD style, const RECT& rect, HWND parent, UINT id);
    HWND Window() const { return m_window.Get(); }

    // A row at the top: the local time now, the image of the outcome (1 for
    // success, 0 for failure), then the record's play time, artist, album,
    // name and the response it carries as its extra text.
    void AddSubmittedRow(bool succeeded, const CTrackRecord& record);
    // The same at a given time of submission.
    void AddSubmittedRow(bool succeeded, const CTrackRecord& record, const SYSTEMTIME& submitted);

private:
    // The list shares its image list and never destroys it; declared first,
    // it outlives the window.
    CImageList m_images;
    CWindow m_window;
};

// Holds back the list's redrawing while a batch of more than one row goes in,
// so that the list updates its scroll bar and paints once for the batch: under
// Wine each insertion into a visible list costs about 11 ms of scroll-bar
// update.
class CRowBatch
{
public:
    CRowBatch(const CMySubmittedListCtrl& list, std::size_t rows);
    ~CRowBatch();
    CRowBatch(const CRowBatch&) = delete;
    CRowBatch& operator=(const CRowBatch&) = delete;

private:
    HWND m_held = nullptr;
};

} // namespace cvas
