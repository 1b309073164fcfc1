#pragma once
// Hands each submission's outcome from the worker thread to the submitted
// list on the player's UI thread: a heap copy of the record travels in a
// posted kSubmittedRowMessage, and whoever holds the copy last frees it.

#include <windows.h>

#include <cstddef>
#include <string>

#include "scrobbler/submission_pass.h"
#include "scrobbler/track_record.h"

namespace cvas
{

class CMySubmittedListCtrl;

// Worker side: posts the success flag (wParam) and a copy of record that
// carries response as its extra text (lParam) to window. When the post
// fails (the window is gone) the copy is freed here.
void ReportSubmission(HWND window, bool succeeded, const CTrackRecord& record,
                      const std::wstring& response);

// The worker's report: every outcome goes to window as above.
SubmissionReport MakeSubmissionReporter(HWND window);

// Window side, for kSubmittedRowMessage: adds the row of the copy in lParam
// to list, then frees the copy.
void OnSubmittedRowMessage(CMySubmittedListCtrl& list, WPARAM wParam, LPARAM lParam);

// Copies made by ReportSubmission and not freed yet.
std::size_t PostedRecordsAlive();

} // namespace cvas
