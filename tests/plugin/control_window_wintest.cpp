// The control's window on its own: the layout of its children, the list of
// submitted tracks that each window owns, and the copies of submitted
// records that reach a window at its end.
#include "plugin/control_window.h"
#include "plugin/window_messages.h"
#include "ui/submitted_rows.h"
#include "ui/test_window.h"
#include "ui/ui_handles.h"

#include <commctrl.h>
#include <gtest/gtest.h>

using namespace cvas;

namespace
{

RECT ChildRect(HWND window, int id)
{
    RECT rect{};
    HWND child = GetDlgItem(window, id);
    GetWindowRect(child, &rect);
    MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&rect), 2);
    return rect;
}

bool SameRect(const RECT& first, const RECT& second)
{
    return EqualRect(&first, &second) != FALSE;
}

CTrackRecord Track(const wchar_t* name)
{
    return CTrackRecord(L"Artist", L"Album", name, L"200", L"2026-11-24 10:00:00", {});
}

// A child whose end reports a submission to its parent: its WM_DESTROY comes
// after the parent's, while the parent's handle still takes posts.
LRESULT CALLBACK LateReporterProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_DESTROY)
        ReportSubmission(GetParent(window), true, Track(L"Late"), L"OK");
    return DefWindowProcW(window, message, wParam, lParam);
}

class ControlWindowTest : public testing::Test
{
protected:
    HWND MakeControl()
    {
        HWND window = CreateControlWindow(host.Get(), RECT{0, 0, 600, 300});
        if (window != nullptr)
            CreateChildWindows(window);
        return window;
    }

    void TearDown() override { SetRowPaceClock(nullptr); }

    CWindow host{test::CreateTestWindow(L"CvasControlHost")};
};

} // namespace

TEST_F(ControlWindowTest, TheButtonKeepsItsPlaceAndTheListTakesTheRest)
{
    const CWindow control(MakeControl());
    ASSERT_TRUE(control);
    MoveWindow(control.Get(), 0, 0, 500, 300, TRUE);
    EXPECT_TRUE(SameRect(ChildRect(control.Get(), kOptionsButtonId), RECT{0, 0, 160, 22}));
    EXPECT_TRUE(SameRect(ChildRect(control.Get(), kSubmittedListId), RECT{0, 22, 500, 300}));

    // A size with a zero side lays nothing out.
    SendMessageW(control.Get(), WM_SIZE, SIZE_RESTORED, MAKELPARAM(0, 120));
    SendMessageW(control.Get(), WM_SIZE, SIZE_RESTORED, MAKELPARAM(320, 0));
    EXPECT_TRUE(SameRect(ChildRect(control.Get(), kSubmittedListId), RECT{0, 22, 500, 300}));

    SendMessageW(control.Get(), WM_SIZE, SIZE_RESTORED, MAKELPARAM(320, 120));
    EXPECT_TRUE(SameRect(ChildRect(control.Get(), kOptionsButtonId), RECT{0, 0, 160, 22}));
    EXPECT_TRUE(SameRect(ChildRect(control.Get(), kSubmittedListId), RECT{0, 22, 320, 120}));
}

TEST_F(ControlWindowTest, EachWindowOwnsItsListAndItsImagesUntilItsEnd)
{
    const CWindow first(MakeControl());
    HWND firstList = GetDlgItem(first.Get(), kSubmittedListId);
    ASSERT_NE(firstList, nullptr);
    {
        const CWindow second(MakeControl());
        HWND secondList = GetDlgItem(second.Get(), kSubmittedListId);
        ASSERT_NE(secondList, nullptr);
        EXPECT_NE(secondList, firstList);
        EXPECT_TRUE(IsWindow(firstList)) << "a second window leaves the first one's list alone";
    }
    ASSERT_TRUE(IsWindow(firstList));
    EXPECT_EQ(ImageList_GetImageCount(ListView_GetImageList(firstList, LVSIL_SMALL)), 2)
        << "the second window's end leaves the first one's images alone";

    // A second Init on the same window makes no second set of children.
    CreateChildWindows(first.Get());
    EXPECT_EQ(GetDlgItem(first.Get(), kSubmittedListId), firstList);

    // The clock of the rows' pace stands still.
    SetRowPaceClock([]() -> ULONGLONG { return 50000; });
    ReportSubmission(first.Get(), false, Track(L"Shown"), L"FAILED no");
    MSG message;
    while (
        PeekMessageW(&message, first.Get(), kSubmittedRowMessage, kSubmittedRowMessage, PM_REMOVE))
        DispatchMessageW(&message);
    EXPECT_EQ(ListView_GetItemCount(firstList), 1);

    // A row within the pace of the last batch comes with the window's row
    // timer.
    ReportSubmission(first.Get(), true, Track(L"Paced"), L"OK");
    while (
        PeekMessageW(&message, first.Get(), kSubmittedRowMessage, kSubmittedRowMessage, PM_REMOVE))
        DispatchMessageW(&message);
    EXPECT_EQ(ListView_GetItemCount(firstList), 1);
    EXPECT_TRUE(test::DispatchTimer(first.Get(), kSubmittedRowTimerId, 10000));
    EXPECT_EQ(ListView_GetItemCount(firstList), 2);
}

TEST_F(ControlWindowTest, ACopyPostedAtTheWindowsEndIsFreedOnce)
{
    const std::size_t alive = PostedRecordsAlive();
    HWND control = MakeControl();
    ASSERT_NE(control, nullptr);
    // Waiting in the queue when the window ends.
    ReportSubmission(control, true, Track(L"Waiting"), L"OK");
    // Posted by a child's end, after the window's own WM_DESTROY.
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = LateReporterProc;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = L"CvasLateReporter";
    RegisterClassW(&windowClass);
    ASSERT_NE(CreateWindowW(L"CvasLateReporter", L"", WS_CHILD, 0, 0, 1, 1, control, nullptr,
                            GetModuleHandleW(nullptr), nullptr),
              nullptr);
    EXPECT_EQ(PostedRecordsAlive(), alive + 1);

    DestroyWindow(control);
    EXPECT_EQ(PostedRecordsAlive(), alive);
    // The queue is left with nothing that could reach a freed copy.
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        DispatchMessageW(&message);
    EXPECT_EQ(PostedRecordsAlive(), alive);
}
