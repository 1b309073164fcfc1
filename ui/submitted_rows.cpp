#include "ui/submitted_rows.h"

#include "support/critical_section.h"
#include "ui/submitted_list.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <vector>

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

// The windows that take rows and the copies on their way to them. The post
// happens under the lock, so a window's end never falls between a sender's
// look at the table and its post.
struct CMailbox
{
    CCriticalSection lock;
    std::vector<HWND> accepting;
    std::map<CTrackRecord*, std::pair<HWND, PostedRecord>> onTheirWay;
};

// Made once and never destroyed: nothing of it runs when the module unloads.
CMailbox& Mailbox()
{
    static CMailbox* const mailbox = new CMailbox;
    return *mailbox;
}

bool IsAccepting(const CMailbox& mailbox, HWND window)
{
    return std::find(mailbox.accepting.begin(), mailbox.accepting.end(), window) !=
           mailbox.accepting.end();
}

} // namespace

void AcceptSubmittedRows(HWND window)
{
    CMailbox& mailbox = Mailbox();
    CLock lock(mailbox.lock);
    if (window != nullptr && !IsAccepting(mailbox, window))
        mailbox.accepting.push_back(window);
}

void EndSubmittedRows(HWND window)
{
    std::vector<PostedRecord> dropped;
    {
        CMailbox& mailbox = Mailbox();
        CLock lock(mailbox.lock);
        std::erase(mailbox.accepting, window);
        for (auto entry = mailbox.onTheirWay.begin(); entry != mailbox.onTheirWay.end();)
        {
            if (entry->second.first != window)
            {
                ++entry;
                continue;
            }
            dropped.push_back(std::move(entry->second.second));
            entry = mailbox.onTheirWay.erase(entry);
        }
    }
    // The copies are freed outside the lock, as they leave this scope.
}

void ReportSubmission(HWND window, bool succeeded, const CTrackRecord& record,
                      const std::wstring& response)
{
    PostedRecord copy = MakePostedRecord(record);
    copy->SetExtra(response);
    CTrackRecord* const address = copy.get();
    CMailbox& mailbox = Mailbox();
    CLock lock(mailbox.lock);
    if (!IsAccepting(mailbox, window))
        return;
    mailbox.onTheirWay.emplace(address, std::make_pair(window, std::move(copy)));
    if (!PostMessageW(window, kSubmittedRowMessage, succeeded ? 1 : 0,
                      reinterpret_cast<LPARAM>(address)))
        mailbox.onTheirWay.erase(address);
}

SubmissionReport MakeSubmissionReporter(HWND window)
{
    return [window](bool succeeded, const CTrackRecord& record, const std::wstring& status) {
        ReportSubmission(window, succeeded, record, status);
    };
}

void OnSubmittedRowMessage(CMySubmittedListCtrl* list, WPARAM wParam, LPARAM lParam)
{
    PostedRecord copy;
    {
        CMailbox& mailbox = Mailbox();
        CLock lock(mailbox.lock);
        const auto entry = mailbox.onTheirWay.find(reinterpret_cast<CTrackRecord*>(lParam));
        if (entry == mailbox.onTheirWay.end())
            return;
        copy = std::move(entry->second.second);
        mailbox.onTheirWay.erase(entry);
    }
    if (list != nullptr)
        list->AddSubmittedRow(wParam != 0, *copy);
}

std::size_t PostedRecordsAlive()
{
    return g_postedAlive;
}

} // namespace cvas
