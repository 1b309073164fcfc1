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
std::atomic<ULONGLONG (*)()> g_paceClock{nullptr};

ULONGLONG PaceClockNow()
{
    ULONGLONG (*const clock)() = g_paceClock;
    return clock != nullptr ? clock() : GetTickCount64();
}

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

// A window that takes rows: when it last added a batch, and whether its row
// timer is set.
struct CTaker
{
    HWND window;
    ULONGLONG lastBatch = 0;
    bool timerSet = false;
};

// The windows that take rows and the copies on their way to them, in the
// order of their posts. The post happens under the lock, so a window's end
// never falls between a sender's look at the table and its post.
struct CMailbox
{
    CCriticalSection lock;
    std::vector<CTaker> takers;
    std::list<COnItsWay> onTheirWay;
};

// Made once and never destroyed: nothing of it runs when the module unloads.
CMailbox& Mailbox()
{
    static CMailbox* const mailbox = new CMailbox;
    return *mailbox;
}

CTaker* FindTaker(CMailbox& mailbox, HWND window)
{
    const auto taker =
        std::find_if(mailbox.takers.begin(), mailbox.takers.end(),
                     [window](const CTaker& candidate) { return candidate.window == window; });
    return taker != mailbox.takers.end() ? &*taker : nullptr;
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

// Takes the copies on their way to window as the batch it adds now. The
// caller holds the mailbox's lock.
std::vector<COnItsWay> TakeBatchFor(CMailbox& mailbox, HWND window)
{
    if (CTaker* const taker = FindTaker(mailbox, window))
        taker->lastBatch = PaceClockNow();
    return TakeCopiesFor(mailbox, window);
}

void AddRows(CMySubmittedListCtrl* list, const std::vector<COnItsWay>& batch)
{
    if (list == nullptr || batch.empty())
        return;
    const CRowBatch rows(*list, batch.size());
    for (const COnItsWay& entry : batch)
        list->AddSubmittedRow(entry.succeeded, *entry.copy);
}

} // namespace

void AcceptSubmittedRows(HWND window)
{
    CMailbox& mailbox = Mailbox();
    CLock lock(mailbox.lock);
    if (window != nullptr && FindTaker(mailbox, window) == nullptr)
        mailbox.takers.push_back(CTaker{window});
}

void EndSubmittedRows(HWND window)
{
    std::vector<COnItsWay> dropped;
    {
        CMailbox& mailbox = Mailbox();
        CLock lock(mailbox.lock);
        std::erase_if(mailbox.takers,
                      [window](const CTaker& taker) { return taker.window == window; });
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
    if (FindTaker(mailbox, window) == nullptr)
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
    // During a backlog's drain the worker posts rows faster than a list can
    // take them one by one (under Wine a row costs about 11 ms), and a queue
    // that is never empty of posts holds back every timer, the poll's among
    // them. So the message's copy comes with every other copy on its way to
    // the same window, in the order of their posts, and a window that took a
    // batch less than kRowPaceMs ago leaves them to its row timer. The later
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
        const HWND window = own->window;
        CTaker* const taker = FindTaker(mailbox, window);
        const ULONGLONG sinceBatch = PaceClockNow() - (taker != nullptr ? taker->lastBatch : 0);
        if (taker != nullptr && sinceBatch < kRowPaceMs)
        {
            if (!taker->timerSet)
                taker->timerSet =
                    SetTimer(window, kSubmittedRowTimerId,
                             static_cast<UINT>(kRowPaceMs - sinceBatch), nullptr) != 0;
            if (taker->timerSet)
                return;
        }
        batch = TakeBatchFor(mailbox, window);
    }
    AddRows(list, batch);
}

void OnSubmittedRowTimer(CMySubmittedListCtrl* list, HWND window)
{
    KillTimer(window, kSubmittedRowTimerId);
    std::vector<COnItsWay> batch;
    {
        CMailbox& mailbox = Mailbox();
        CLock lock(mailbox.lock);
        if (CTaker* const taker = FindTaker(mailbox, window))
            taker->timerSet = false;
        batch = TakeBatchFor(mailbox, window);
    }
    AddRows(list, batch);
}

void SetRowPaceClock(ULONGLONG (*clock)())
{
    g_paceClock = clock;
}

std::size_t PostedRecordsAlive()
{
    return g_postedAlive;
}

} // namespace cvas
