#include "ui/submitted_rows.h"

#include "plugin/window_messages.h"
#include "ui/submitted_list.h"

#include <atomic>
#include <memory>

namespace cvas
{
namespace
{

std::atomic<std::size_t> g_postedAlive{0};

struct CPostedRecordDeleter
{
    void operator()(CTrackRecord* record) const
    {
        --g_postedAlive;
        delete record;
    }
};

// A copy on its way from the worker to the window.
using PostedRecord = std::unique_ptr<CTrackRecord, CPostedRecordDeleter>;

PostedRecord MakePostedRecord(const CTrackRecord& record)
{
    auto copy = std::make_unique<CTrackRecord>(record);
    ++g_postedAlive;
    return PostedRecord(copy.release());
}

} // namespace

void ReportSubmission(HWND window, bool succeeded, const CTrackRecord& record,
                      const std::wstring& response)
{
    PostedRecord copy = MakePostedRecord(record);
    copy->SetExtra(response);
    if (PostMessageW(window, kSubmittedRowMessage, succeeded ? 1 : 0,
                     reinterpret_cast<LPARAM>(copy.get())))
        copy.release(); // the window owns it now
}

SubmissionReport MakeSubmissionReporter(HWND window)
{
    return [window](bool succeeded, const CTrackRecord& record, const std::wstring& status) {
        ReportSubmission(window, succeeded, record, status);
    };
}

void OnSubmittedRowMessage(CMySubmittedListCtrl& list, WPARAM wParam, LPARAM lParam)
{
    const PostedRecord copy(reinterpret_cast<CTrackRecord*>(lParam));
    if (copy)
        list.AddSubmittedRow(wParam != 0, *copy);
}

std::size_t PostedRecordsAlive()
{
    return g_postedAlive;
}

} // namespace cvas
