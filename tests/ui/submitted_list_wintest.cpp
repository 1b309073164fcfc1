#include "plugin/window_messages.h"
#include "ui/submitted_list.h"
#include "ui/submitted_rows.h"
#include "ui/test_window.h"
#include "ui/ui_handles.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using namespace cvas;

namespace
{

CMySubmittedListCtrl* g_list = nullptr;
ULONGLONG g_now = 0;

LRESULT CALLBACK PluginWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == kSubmittedRowMessage && g_list != nullptr)
    {
        OnSubmittedRowMessage(g_list, wParam, lParam);
        return 0;
    }
    if (message == WM_TIMER && wParam == kSubmittedRowTimerId)
    {
        OnSubmittedRowTimer(g_list, window);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

CTrackRecord Track(const std::wstring& name, const std::wstring& response = L"OK")
{
    CTrackRecord record(L"Artist of " + name, L"Album of " + name, name, L"215",
                        L"2024-02-29 21:30:00", {});
    record.SetExtra(response);
    return record;
}

std::wstring LocalNow()
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    return FormatTrackTime(now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond);
}

class SubmittedListTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(list.Create(kSubmittedListStyle, RECT{0, 22, 1200, 400}, plugin.Get(),
                                kSubmittedListId));
        g_list = &list;
        AcceptSubmittedRows(plugin.Get());
    }
    void TearDown() override
    {
        EndSubmittedRows(plugin.Get());
        g_list = nullptr;
        SetRowPaceClock(nullptr);
    }

    // The row's six texts followed by its image number.
    std::vector<std::wstring> Row(int row) const
    {
        std::vector<std::wstring> texts;
        for (int column = 0; column < 6; ++column)
        {
            wchar_t text[256] = {};
            ListView_GetItemText(list.Window(), row, column, text, 256);
            texts.push_back(text);
        }
        LVITEMW item{};
        item.mask = LVIF_IMAGE;
        item.iItem = row;
        texts.push_back(ListView_GetItem(list.Window(), &item) ? std::to_wstring(item.iImage)
                                                               : L"");
        return texts;
    }

    // Only the row messages: a timer that is due stays in the queue.
    void DispatchRowMessages()
    {
        MSG message;
        for (int i = 0; i < 100 && PeekMessageW(&message, plugin.Get(), kSubmittedRowMessage,
                                                kSubmittedRowMessage, PM_REMOVE);
             ++i)
            DispatchMessageW(&message);
    }

    void DispatchWaitingMessages()
    {
        MSG message;
        for (int i = 0; i < 100 && PeekMessageW(&message, plugin.Get(), 0, 0, PM_REMOVE); ++i)
            DispatchMessageW(&message);
    }

    CWindow plugin{test::CreateTestWindow(L"CvasSubmittedListTest", PluginWindowProc)};
    CMySubmittedListCtrl list;
};

} // namespace

TEST_F(SubmittedListTest, TheListHoldsBothImagesAndTheSixColumns)
{
    EXPECT_EQ(GetDlgCtrlID(list.Window()), static_cast<int>(kSubmittedListId));
    const HIMAGELIST images = ListView_GetImageList(list.Window(), LVSIL_SMALL);
    EXPECT_EQ(ImageList_GetImageCount(images), 2) << "both icons load from the module";
    EXPECT_EQ(Header_GetItemCount(ListView_GetHeader(list.Window())), 6);
    EXPECT_EQ(ListView_GetColumnWidth(list.Window(), 1), 160);
    EXPECT_EQ(ListView_GetColumnWidth(list.Window(), 5), 200);

    CMySubmittedListCtrl orphan;
    EXPECT_FALSE(orphan.Create(kSubmittedListStyle, RECT{0, 0, 9, 9}, nullptr, 1));
}

TEST_F(SubmittedListTest, RowsRunNewestFirstAndRowsOfOneSecondShareTheirTime)
{
    const std::wstring failure = L"FAILED Plugin bug: Not all request variables are set";
    list.AddSubmittedRow(true, Track(L"First"), SYSTEMTIME{2024, 2, 4, 29, 23, 59, 6, 999});
    list.AddSubmittedRow(true, Track(L"Second"), SYSTEMTIME{2024, 2, 4, 29, 23, 59, 7, 10});
    list.AddSubmittedRow(false, Track(L"Third", failure),
                         SYSTEMTIME{2024, 2, 4, 29, 23, 59, 7, 980});

    ASSERT_EQ(ListView_GetItemCount(list.Window()), 3);
    using Texts = std::vector<std::wstring>;
    EXPECT_EQ(Row(0), (Texts{L"2024-02-29 23:59:07", L"2024-02-29 21:30:00", L"Artist of Third",
                             L"Album of Third", L"Third", failure, L"0"}));
    EXPECT_EQ(Row(1)[0], L"2024-02-29 23:59:07");
    EXPECT_EQ(Row(1)[4], L"Second");
    EXPECT_EQ(Row(1)[6], L"1");
    EXPECT_EQ(Row(2)[4], L"First");

    const std::wstring before = LocalNow();
    list.AddSubmittedRow(true, Track(L"Now"));
    const std::wstring after = LocalNow();
    // The tests run 5 h 45 min east of UTC, so a stamp in UTC falls outside.
    EXPECT_LE(before, Row(0)[0]);
    EXPECT_LE(Row(0)[0], after);
}

TEST_F(SubmittedListTest, AReportFromTheWorkerBecomesARowAndTheWindowFreesTheCopy)
{
    const std::size_t alive = PostedRecordsAlive();
    const CTrackRecord record = Track(L"Posted", L"");
    const SubmissionReport report = MakeSubmissionReporter(plugin.Get());
    std::thread worker([&] { report(false, record, L"BADAUTH"); });
    worker.join();
    EXPECT_EQ(PostedRecordsAlive(), alive + 1) << "the copy waits in the window's queue";
    EXPECT_EQ(record.Extra(), L"") << "the response goes into the copy only";

    DispatchWaitingMessages();
    EXPECT_EQ(PostedRecordsAlive(), alive);
    ASSERT_EQ(ListView_GetItemCount(list.Window()), 1);
    EXPECT_EQ(Row(0)[4], L"Posted");
    EXPECT_EQ(Row(0)[5], L"BADAUTH");

    HWND gone = nullptr;
    {
        const CWindow closed(test::CreateTestWindow(L"CvasSubmittedListTest", PluginWindowProc));
        gone = closed.Get();
        AcceptSubmittedRows(gone);
    }
    ReportSubmission(gone, true, record, L"OK");
    EXPECT_EQ(PostedRecordsAlive(), alive) << "a post that fails is freed by its sender";
    EndSubmittedRows(gone);

    // A window that ended takes nothing more, even while its handle lives on;
    // what was on its way to it when it ended is freed by its end.
    report(true, record, L"OK");
    EXPECT_EQ(PostedRecordsAlive(), alive + 1);
    EndSubmittedRows(plugin.Get());
    EXPECT_EQ(PostedRecordsAlive(), alive);
    report(true, record, L"OK");
    EXPECT_EQ(PostedRecordsAlive(), alive);
    DispatchWaitingMessages();
    EXPECT_EQ(ListView_GetItemCount(list.Window()), 1) << "a freed copy is never read";
}

TEST_F(SubmittedListTest, OneRowMessageTakesEveryRowWaitingForTheWindowInTheOrderOfThePosts)
{
    const std::size_t alive = PostedRecordsAlive();
    const SubmissionReport report = MakeSubmissionReporter(plugin.Get());
    report(true, Track(L"First"), L"OK");
    report(false, Track(L"Second"), L"FAILED no");
    report(true, Track(L"Third"), L"OK");

    MSG message;
    ASSERT_TRUE(PeekMessageW(&message, plugin.Get(), kSubmittedRowMessage, kSubmittedRowMessage,
                             PM_REMOVE));
    DispatchMessageW(&message);
    EXPECT_EQ(PostedRecordsAlive(), alive);
    ASSERT_EQ(ListView_GetItemCount(list.Window()), 3);
    EXPECT_EQ(Row(0)[4], L"Third");
    EXPECT_EQ(Row(1)[4], L"Second");
    EXPECT_EQ(Row(1)[6], L"0") << "each row keeps its own outcome";
    EXPECT_EQ(Row(2)[4], L"First");
    // A list whose redrawing is held back would not ask to paint a new row.
    ShowWindow(plugin.Get(), SW_SHOWNOACTIVATE);
    UpdateWindow(list.Window());
    ASSERT_FALSE(GetUpdateRect(list.Window(), nullptr, FALSE));
    list.AddSubmittedRow(true, Track(L"Fourth"));
    EXPECT_TRUE(GetUpdateRect(list.Window(), nullptr, FALSE)) << "the list draws again";

    DispatchWaitingMessages();
    EXPECT_EQ(ListView_GetItemCount(list.Window()), 4) << "the later messages add nothing";
}

TEST_F(SubmittedListTest, RowsWithinThePaceOfTheLastBatchWaitForTheRowTimer)
{
    const std::size_t alive = PostedRecordsAlive();
    SetRowPaceClock([] { return g_now; });
    const SubmissionReport report = MakeSubmissionReporter(plugin.Get());
    g_now = 10000;
    report(true, Track(L"First"), L"OK");
    DispatchRowMessages();
    ASSERT_EQ(ListView_GetItemCount(list.Window()), 1) << "a first row goes in at once";

    g_now += kRowPaceMs - 1;
    report(false, Track(L"Second"), L"FAILED no");
    DispatchRowMessages();
    EXPECT_EQ(ListView_GetItemCount(list.Window()), 1);
    EXPECT_EQ(PostedRecordsAlive(), alive + 1) << "the row waits for the timer";
    ASSERT_TRUE(test::DispatchTimer(plugin.Get(), kSubmittedRowTimerId, 10000));
    ASSERT_EQ(ListView_GetItemCount(list.Window()), 2);
    EXPECT_EQ(Row(0)[4], L"Second");
    EXPECT_EQ(Row(0)[6], L"0");
    EXPECT_EQ(PostedRecordsAlive(), alive);

    // The timer's batch counts as the last one.
    g_now += kRowPaceMs;
    report(true, Track(L"Third"), L"OK");
    DispatchRowMessages();
    EXPECT_EQ(ListView_GetItemCount(list.Window()), 3);
}
