#include "ui/submitted_rows.h"

#include "support/critical_section.h"
#include "ui/submitted_list.h"

#include <algorithm>
#include <atomic>
#include <list>
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

struct COnItsWay
{
    HWND window;
    bool succeeded;
    PostedRecord copy;
};

// The windows that take rows and the copies on their way to them, in the
// order of their posts. The post happens under the lock, so a window's end
// never falls between a sender's look at the table and its post.
struct CMailbox
{
    CCriticalSection lock;
    std::vector<HWND> accepting;
    std::list<COnItsWay> onTheirWay;
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

// Takes the copies on their way to window out of the table, in the order of
// their posts. The caller holds the mailbox's lock.
std::vector<COnItsWay> TakeCopiesFor(CMailbox& mailbox, HWND window)
{
    std::vector<COnItsWay> taken;
    for (auto entry = mailbox.onTheirWay.begin(); entry != mailbox.onTheirWay.end();)
    {
        if (entry->window != window)
        {
            ++entry;
            continue;
        }
        taken.push_back(std::move(*entry));
        entry = mailbox.onTheirWay.erase(entry);
    }
    return taken;
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
    std::vector<COnItsWay> dropped;
    {
        CMailbox& mailbox = Mailbox();
        CLock lock(mailbox.lock);
        std::erase(mailbox.accepting, window);
        dropped = TakeCopiesFor(mailbox, window);
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
    mailbox.onTheirWay.push_back(COnItsWay{window, succeeded, std::move(copy)});
    if (!PostMessageW(window, kSubmittedRowMessage, succeeded ? 1 : 0,
                      reinterpret_cast<LPARAM>(address)))
        mailbox.onTheirWay.pop_back();
}

SubmissionReport MakeSubmissionReporter(HWND window)
{
    return [window](bool succeeded, const CTrackRecord& record, const std::wstring& status) {
        ReportSubmission(window, succeeded, record, status);
    };
}

void OnSubmittedRowMessage(CMySubmittedListCtrl* list, WPARAM, LPARAM lParam)
{
    // The message's copy comes with every other copy on its way to the same
    // window, in the order of their posts: during a backlog's drain the
    // worker posts rows faster than one list update a row can follow, and a
    // queue never empty of posts would hold back the poll timer. The later
    // messages find their copies taken and do nothing.
    std::vector<COnItsWay> batch;
    {
        CMailbox& mailbox = Mailbox();
        CLock lock(mailbox.lock);
        const auto own = std::find_if(
            mailbox.onTheirWay.begin(), mailbox.onTheirWay.end(), [lParam](const COnItsWay& entry) {
                return reinterpret_cast<LPARAM>(entry.copy.get()) == lParam;
            });
        if (own == mailbox.onTheirWay.end())
            return;
        batch = TakeCopiesFor(mailbox, own->window);
    }
    if (list == nullptr)
        return;
    const CRowBatch rows(*list, batch.size());
    for (const COnItsWay& entry : batch)
        list->AddSubmittedRow(entry.succeeded, *entry.copy);
}

std::size_t PostedRecordsAlive()
{
    return g_postedAlive;
}

} // namespace cvas
