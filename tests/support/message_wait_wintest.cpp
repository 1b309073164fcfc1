// The waits of a thread that may own windows: with PumpMessages a window of
// the waiting thread gets its messages meanwhile, and a WM_QUIT is kept for
// the thread's own loop; a plain wait handles nothing. Time-outs of 0 only:
// no outcome here depends on how fast the machine is.
#include "support/message_wait.h"
#include "support/win_handle.h"
#include "ui/test_window.h"

#include <gtest/gtest.h>

using namespace cvas;

namespace
{

constexpr UINT kSetEvent = WM_APP + 1;

HANDLE g_event = nullptr;
int g_handled = 0;

// Sets g_event for each kSetEvent it is sent or posted.
LRESULT CALLBACK SettingWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message != kSetEvent)
        return DefWindowProcW(window, message, wParam, lParam);
    ++g_handled;
    SetEvent(g_event);
    return 0;
}

class WaitForAnyTest : public testing::Test
{
protected:
    void SetUp() override
    {
        g_event = event.Get();
        g_handled = 0;
        window = test::CreateTestWindow(L"MessageWaitTestWindow", SettingWindowProc);
        ASSERT_NE(window, nullptr);
    }
    void TearDown() override
    {
        DestroyWindow(window);
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        {
        }
        g_event = nullptr;
    }

    CHandle never{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    CHandle event{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    HWND window = nullptr;
};

} // namespace

TEST_F(WaitForAnyTest, PumpingHandlesTheMessagesThatComeAndEndsAsThePlainWait)
{
    const HANDLE handles[2] = {never.Get(), event.Get()};
    // The window sets the event it waits for, but only when its message is
    // handled: a plain wait stays until its time-out.
    PostMessageW(window, kSetEvent, 0, 0);
    EXPECT_EQ(WaitForAny(handles, 2, 0, WaitKind::Plain), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_EQ(g_handled, 0);
    EXPECT_EQ(WaitForAny(handles, 2, 60000, WaitKind::PumpMessages), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(g_handled, 1);
    // A handle that is signalled already ends either wait at once, with its index.
    EXPECT_EQ(WaitForAny(handles, 2, 0, WaitKind::PumpMessages), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(WaitForAny(handles, 2, 0, WaitKind::Plain), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(WaitForAny(handles, 1, 0, WaitKind::PumpMessages), static_cast<DWORD>(WAIT_TIMEOUT));
}

TEST_F(WaitForAnyTest, AQuitIsKeptForTheThreadsOwnLoop)
{
    const HANDLE handles[1] = {never.Get()};
    PostMessageW(window, kSetEvent, 0, 0);
    PostQuitMessage(7);
    EXPECT_EQ(WaitForAny(handles, 1, 0, WaitKind::PumpMessages), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_EQ(g_handled, 1) << "what came before the quit was handled";
    MSG message{};
    ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT));
    EXPECT_EQ(message.wParam, 7u);
}
