// The plug-in's life driven through its control, as a container drives it:
// Init before or after the activation, the warnings of a missing user name
// or password, the status lines of every start and stop in their order and
// at their levels, the hot keys of the features that are on, a second Init,
// and a worker that outlives the stop's 5,000 ms.
#include "common/captured_messages.h"
#include "common/log_texts.h"
#include "common/temp_folder.h"
#include "host/host_state.h"
#include "host/poll_timer.h"
#include "plugin/in_place_site.h"
#include "plugin/interface_control.h"
#include "plugin/module_state.h"
#include "plugin/plugin_lifecycle.h"
#include "plugin/window_messages.h"
#include "scrobbler/queue/data_files.h"
#include "scrobbler/queue/engine_state.h"
#include "settings/data_folder.h"
#include "settings/ini_file.h"
#include "settings/password_forms.h"
#include "support/logs.h"
#include "support/module_thread.h"
#include "ui/test_window.h"
#include "ui/ui_handles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

using namespace cvas;
using namespace cvas::test;

namespace
{

// Far beyond what any step needs, even on a busy machine.
constexpr ULONGLONG kStepLimitMs = 60000;

constexpr UINT kAllModifiers = MOD_CONTROL | MOD_ALT | MOD_SHIFT;

using Texts = std::vector<std::wstring>;

bool WaitFor(const std::function<bool()>& condition)
{
    const ULONGLONG end = GetTickCount64() + kStepLimitMs;
    while (!condition())
    {
        if (GetTickCount64() >= end)
            return false;
        Sleep(10);
    }
    return true;
}

// Whether some window holds the key: a second registration of it fails.
bool KeyIsTaken(HWND window, UINT virtualKey)
{
    if (!RegisterHotKey(window, 0x7000, kAllModifiers, virtualKey))
        return true;
    UnregisterHotKey(window, 0x7000);
    return false;
}

// The window's own visibility; the test's host window stays hidden.
bool Shown(HWND window)
{
    return (GetWindowLongW(window, GWL_STYLE) & WS_VISIBLE) != 0;
}

class PluginLifeTest : public testing::Test
{
protected:
    void SetUp() override
    {
        OverrideSpecialFolders(root.Path() + L"Documents", root.Path() + L"AppData");
        ForgetDataFilePaths();
        TakeCapturedMessages();
    }

    void TearDown() override
    {
        if (control != nullptr)
        {
            control->Terminate();
            control->Close(OLECLOSE_NOSAVE);
            control->Release();
        }
        EXPECT_TRUE(WaitFor([] { return LiveModuleThreads() == 0; }));
        CloseLogs();
        SetStatusLogLevel(1);
        OverrideSpecialFolders(L"", L"");
        ForgetDataFilePaths();
    }

    // A settings file with the tester's account (when given), the status
    // log at level, a poll far apart and hot keys no desktop uses.
    void WriteSettings(bool enabled, const std::wstring& user, const std::wstring& password,
                       int level = 1, bool buddies = true, bool recommendations = false)
    {
        const CIni ini(DataFolder() + L"Settings.INI");
        const wchar_t* general = L"General";
        ini.WriteBool(general, L"Enabled", enabled);
        ini.WriteString(general, L"UserName", user);
        ini.WriteString(general, L"Password", EncodePasswordForSettingsFile(password));
        ini.WriteString(general, L"StatusLogLevel", std::to_wstring(level));
        ini.WriteString(general, L"PollTimeout", L"600000");
        ini.WriteString(general, L"url", L"http://127.0.0.1:9/?hs=true&p=1.1");
        ini.WriteBool(general, L"EnableBuddySystem", buddies);
        ini.WriteString(general, L"BuddyHotkey", L"Ctrl+Alt+Shift+F21");
        ini.WriteBool(general, L"EnableRecommendationSystem", recommendations);
        ini.WriteString(general, L"RecommendationHotkey", L"Ctrl+Alt+Shift+F22");
    }

    HWND ControlWindow()
    {
        LONG window = 0;
        control->get_Window(&window);
        return reinterpret_cast<HWND>(static_cast<LONG_PTR>(window));
    }

    HRESULT Activate()
    {
        RECT rect{0, 0, 640, 200};
        return control->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, &site, 0, host.Get(), &rect);
    }

    // The status lines, oldest first, without the worker's first wait,
    // whose moment against the UI thread's lines is its own, and without the
    // line of the events, which only the module's first Init makes.
    static Texts StatusLines()
    {
        Texts texts = LogTexts(StatusLogFile());
        std::reverse(texts.begin(), texts.end());
        std::erase(texts, L"Waiting for something to do ...");
        std::erase_if(texts, [](const std::wstring& text) {
            return text.starts_with(L"Created EventShutdown=");
        });
        return texts;
    }

    static bool StatusHas(const std::wstring& text)
    {
        const Texts texts = LogTexts(StatusLogFile());
        return std::find(texts.begin(), texts.end(), text) != texts.end();
    }

    CTempFolder root;
    CWindow host{CreateTestWindow(L"CvasPluginHost")};
    CInPlaceSite site{host.Get()};
    CInterfaceControl* control = new CInterfaceControl;
};

} // namespace

TEST_F(PluginLifeTest, InitBeforeTheActivationRunsOnTheWindowTheActivationShows)
{
    WriteSettings(true, L"tester", L"secret");
    ASSERT_EQ(control->Init(nullptr), S_OK);
    HWND window = ControlWindow();
    ASSERT_NE(window, nullptr) << "Init makes the window it needs";
    EXPECT_EQ(PluginWindow(), window);
    EXPECT_FALSE(Shown(window));
    EXPECT_TRUE(KeyIsTaken(host.Get(), VK_F21));
    EXPECT_NE(GetDlgItem(window, kSubmittedListId), nullptr);

    ASSERT_EQ(Activate(), S_OK);
    EXPECT_EQ(ControlWindow(), window) << "the activation shows the window Init made";
    EXPECT_EQ(GetParent(window), host.Get());
    EXPECT_TRUE(Shown(window));
    EXPECT_EQ(site.Activations(), 1);
    RECT list{};
    GetClientRect(GetDlgItem(window, kSubmittedListId), &list);
    EXPECT_EQ(list.right, 640) << "the list is laid out in the place the activation gave";

    // The poll's one timer is on that window: the stop kills it there.
    EXPECT_TRUE(KillTimer(window, kPollTimerId));
    EXPECT_FALSE(KillTimer(nullptr, kPollTimerId));

    // A deactivation while the plug-in runs keeps the window it runs on.
    ASSERT_EQ(control->InPlaceDeactivate(), S_OK);
    EXPECT_TRUE(IsWindow(window));
    EXPECT_FALSE(Shown(window));
    EXPECT_EQ(site.Deactivations(), 1);
    ASSERT_EQ(Activate(), S_OK);
    EXPECT_EQ(ControlWindow(), window);

    ASSERT_EQ(control->Terminate(), S_OK);
    ASSERT_EQ(control->Close(OLECLOSE_NOSAVE), S_OK);
    EXPECT_FALSE(IsWindow(window)) << "after Terminate the deactivation ends the window";
}

TEST_F(PluginLifeTest, AFirstStartAsksTheWindowToOpenTheOptions)
{
    ASSERT_EQ(control->Init(nullptr), S_OK);
    MSG message{};
    ASSERT_TRUE(PeekMessageW(&message, ControlWindow(), kOpenOptionsMessage, kOpenOptionsMessage,
                             PM_REMOVE));
    EXPECT_EQ(message.wParam, 1u);
    EXPECT_FALSE(IsScrobblingEnabled());
}

TEST_F(PluginLifeTest, StartAndStopWriteTheirLinesInOrderAtTheirLevels)
{
    WriteSettings(true, L"tester", L"secret");
    ASSERT_EQ(Activate(), S_OK);
    ASSERT_EQ(control->Init(nullptr), S_OK);
    EXPECT_TRUE(IsScrobblingEnabled());
    EXPECT_TRUE(TakeCapturedMessages().empty());
    const std::wstring queue = L"Loading queue from " + DataFolder() + L"Queue.xml";
    const Texts start = StatusLines();
    EXPECT_EQ(start, (Texts{L"Initialising AS plugin", queue, L"AS thread starting",
                            L"AS thread started", L"AS plugin initialised"}))
        << "with StatusLogLevel=1";

    // A second Init does nothing at all.
    ASSERT_EQ(control->Init(nullptr), S_OK);
    EXPECT_EQ(StatusLines().size(), start.size());

    SetScrobblingEnabled(false);
    EXPECT_FALSE(IsScrobblingEnabled());
    const Texts stop = StatusLines();
    EXPECT_EQ(Texts(stop.begin() + static_cast<long>(start.size()), stop.end()),
              (Texts{L"Shutting down AS thread", L"Wait status 0", L"Told to exit",
                     L"Saving queue to " + DataFolder() + L"Queue.xml ... 0 entries",
                     L"AS thread killed", L"AS thread shutdown"}));
    EXPECT_FALSE(KillTimer(ControlWindow(), kPollTimerId)) << "the stop killed the poll";

    // Stopping what is stopped writes nothing.
    SetScrobblingEnabled(false);
    EXPECT_EQ(StatusLines().size(), stop.size());

    ASSERT_EQ(control->Terminate(), S_OK);
    const Texts end = StatusLines();
    EXPECT_EQ(Texts(end.begin() + static_cast<long>(stop.size()), end.end()),
              (Texts{L"AS plugin terminating", L"AS plugin terminated"}));
    EXPECT_TRUE(TakeCapturedMessages().empty());
}

TEST_F(PluginLifeTest, AtLevelZeroOnlyTheOutcomesAreWritten)
{
    WriteSettings(true, L"tester", L"secret", 0);
    ASSERT_EQ(Activate(), S_OK);
    ASSERT_EQ(control->Init(nullptr), S_OK);
    SetScrobblingEnabled(false);
    ASSERT_EQ(control->Terminate(), S_OK);
    EXPECT_EQ(
        StatusLines(),
        (Texts{L"Initialising AS plugin", L"Loading queue from " + DataFolder() + L"Queue.xml",
               L"AS plugin initialised", L"Shutting down AS thread", L"Told to exit",
               L"Saving queue to " + DataFolder() + L"Queue.xml ... 0 entries",
               L"AS thread shutdown", L"AS plugin terminating", L"AS plugin terminated"}));
}

TEST_F(PluginLifeTest, AMissingAccountWarnsAndLeavesTheFlagOnWithNoWorkerAndNoPoll)
{
    struct Case
    {
        const wchar_t* user;
        const wchar_t* password;
        const wchar_t* warning;
    };
    const Case cases[] = {
        {L"", L"", L"last.fm support enabled but no username defined ... support disabled!"},
        {L"", L"secret", L"last.fm support enabled but no username defined ... support disabled!"},
        {L"tester", L"", L"last.fm support enabled but no password defined ... support disabled!"},
    };
    for (const Case& item : cases)
    {
        SCOPED_TRACE(testing::Message()
                     << "user '" << item.user << "' password '" << item.password << "'");
        if (control == nullptr)
            control = new CInterfaceControl;
        WriteSettings(true, item.user, item.password);
        ASSERT_EQ(Activate(), S_OK);
        ASSERT_EQ(control->Init(nullptr), S_OK);
        const std::vector<CapturedMessage> boxes = TakeCapturedMessages();
        ASSERT_EQ(boxes.size(), 1u) << "one warning, even when both are missing";
        EXPECT_EQ(boxes[0].text, item.warning);
        EXPECT_EQ(boxes[0].caption, L"last.fm");
        EXPECT_EQ(boxes[0].style, static_cast<unsigned>(MB_ICONEXCLAMATION | MB_OK));
        EXPECT_TRUE(IsScrobblingEnabled()) << "the flag follows the setting";
        EXPECT_FALSE(StatusHas(L"AS thread starting"));
        EXPECT_EQ(LiveModuleThreads(), 0) << "no worker";
        EXPECT_FALSE(KillTimer(ControlWindow(), kPollTimerId)) << "no poll";
        ASSERT_EQ(control->Terminate(), S_OK);
        control->Close(OLECLOSE_NOSAVE);
        control->Release();
        control = nullptr;
        CloseLogs();
    }
}

TEST_F(PluginLifeTest, OnlyTheHotKeysOfTheFeaturesThatAreOnAreRegistered)
{
    WriteSettings(false, L"", L"", 1, false, true);
    ASSERT_EQ(Activate(), S_OK);
    ASSERT_EQ(control->Init(nullptr), S_OK);
    EXPECT_FALSE(KeyIsTaken(host.Get(), VK_F21)) << "buddies are off";
    EXPECT_TRUE(KeyIsTaken(host.Get(), VK_F22)) << "recommendations are on";
    EXPECT_TRUE(TakeCapturedMessages().empty());
}

TEST_F(PluginLifeTest, AWorkerThatOutlivesTheStopIsWaitedForByTheNext)
{
    WriteSettings(true, L"tester", L"secret");
    ASSERT_EQ(Activate(), S_OK);
    ASSERT_EQ(control->Init(nullptr), S_OK);
    const std::wstring queue = L"Loading queue from " + DataFolder() + L"Queue.xml";
    ASSERT_TRUE(WaitFor([] { return StatusHas(L"Waiting for something to do ..."); }));
    {
        // The worker's last step takes the queue lock, held here: its stop
        // cannot end within the 5,000 ms.
        CLock held(QueueLock());
        SetScrobblingEnabled(false);
        const std::vector<CapturedMessage> boxes = TakeCapturedMessages();
        ASSERT_EQ(boxes.size(), 1u);
        EXPECT_EQ(boxes[0].text, L"TIMEOUT WHILE WAITING FOR THE BACKGROUND THREAD TO TERMINATE!");
        EXPECT_EQ(boxes[0].style, static_cast<unsigned>(MB_ICONEXCLAMATION | MB_OK));
        const Texts stopped = StatusLines();
        ASSERT_GE(stopped.size(), 2u);
        EXPECT_EQ(Texts(stopped.end() - 2, stopped.end()),
                  (Texts{L"AS thread killed", L"AS thread shutdown"}));
        EXPECT_FALSE(IsScrobblingEnabled());
        EXPECT_EQ(LiveModuleThreads(), 1) << "nothing is killed";

        // The next worker leaves the queue to the straggler until it ended.
        SetScrobblingEnabled(true);
        ASSERT_TRUE(
            WaitFor([] { return StatusHas(L"Waiting for the previous AS thread to end"); }));
        const Texts restarted = StatusLines();
        EXPECT_EQ(std::count(restarted.begin(), restarted.end(), queue), 1)
            << "the queue is not loaded while the straggler holds it";
    }
    ASSERT_TRUE(WaitFor([&] {
        const Texts texts = StatusLines();
        return std::count(texts.begin(), texts.end(), queue) == 2;
    })) << "the new worker loads the queue once the straggler saved it and ended";
    const Texts texts = StatusLines();
    const auto waited =
        std::find(texts.begin(), texts.end(), L"Waiting for the previous AS thread to end");
    const auto saved = std::find(waited, texts.end(),
                                 L"Saving queue to " + DataFolder() + L"Queue.xml ... 0 entries");
    EXPECT_NE(saved, texts.end()) << "the straggler saves after the new worker began to wait";
    EXPECT_NE(std::find(saved, texts.end(), queue), texts.end());
    EXPECT_TRUE(WaitFor([] { return LiveModuleThreads() == 1; })) << "the straggler ended";
}
