#pragma once
// Hands each submission's outcome from the worker thread to the submitted
// list on the player's UI thread: a heap copy of the record travels in a
// posted kSubmittedRowMessage. Every copy is freed exactly once, whatever
// the order of the worker's post and the window's end: the copies on their
// way are kept in a table, which the window's end empties.

#include <windows.h>

#include <cstddef>
#include <string>

#include "scrobbler/queue/track_record.h"
#include "scrobbler/worker/submission_pass.h"

namespace cvas
{

// wParam the success flag, lParam an owned heap CTrackRecord (the window
// frees it after adding its row; the flag travels with the copy as well).
constexpr UINT kSubmittedRowMessage = WM_USER + 2;

// The row timer of a window that leaves rows waiting (the poll timer is 1).
constexpr UINT_PTR kSubmittedRowTimerId = 2;
// The least time between two batches of rows, which leaves the player's UI
// thread free for its other messages and timers.
constexpr ULONGLONG kRowPaceMs = 100;

class CMySubmittedListCtrl;

// Window side: from its creation (WM_CREATE) on, window takes rows; from its
// end (WM_DESTROY) on it takes none, and the copies still on their way to it
// are freed.
void AcceptSubmittedRows(HWND window);
void EndSubmittedRows(HWND window);

// Worker side: posts the success flag (wParam) and a copy of record that
// carries response as its extra text (lParam) to window. When window takes
// no rows, or the post fails, the copy is freed here.
void ReportSubmission(HWND window, bool succeeded, const CTrackRecord& record,
                      const std::wstring& response);

// The worker's report: every outcome goes to window as above.
SubmissionReport MakeSubmissionReporter(HWND window);

// Window side, for kSubmittedRowMessage: adds the row of the copy in lParam
// and of every other copy already on its way to the same window to list
// (when there is one), in the order of their posts, then frees them. A copy
// that an earlier message or the window's end took already is not touched.
// Within kRowPaceMs of the window's last batch the rows wait instead, and the
// window's row timer (kSubmittedRowTimerId, a WM_TIMER) adds them.
void OnSubmittedRowMessage(CMySubmittedListCtrl* list, WPARAM wParam, LPARAM lParam);

// Window side, for the WM_TIMER of kSubmittedRowTimerId: stops the timer and
// adds the rows waiting for window to list.
void OnSubmittedRowTimer(CMySubmittedListCtrl* list, HWND window);

// For tests: the clock, in milliseconds, that the pace of the batches reads
// (GetTickCount64 when null).
void SetRowPaceClock(ULONGLONG (*clock)());

// Copies made by ReportSubmission and not freed yet.
std::size_t PostedRecordsAlive();

} // namespace cvas
