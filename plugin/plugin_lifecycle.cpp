#include "plugin/plugin_lifecycle.h"

#include "buddies/buddy_thread.h"
#include "host/host_state.h"
#include "host/poll_timer.h"
#include "plugin/control_window.h"
#include "plugin/module_state.h"
#include "plugin/window_messages.h"
#include "scrobbler/network/submission_settings.h"
#include "scrobbler/queue/engine_state.h"
#include "scrobbler/queue/replacements_file.h"
#include "scrobbler/queue/submission_queue.h"
#include "scrobbler/worker/submission_worker.h"
#include "settings/data_folder.h"
#include "settings/ini_file.h"
#include "settings/live_settings.h"
#include "settings/log_settings.h"
#include "support/hot_keys.h"
#include "support/logs.h"
#include "support/message_box.h"
#include "support/win_handle.h"
#include "ui/submitted_rows.h"

namespace cvas
{
namespace
{

constexpr DWORD kWorkerStopLimitMs = 5000;

bool g_initialised = false;
CHandle g_worker;
CHandle g_workerStop; // the running worker's own stop event: set once, never reset
// A worker that outlived a stop that timed out. The plug-in carries on; the
// next worker waits for it to end before it touches the queue.
CHandle g_straggler;

// The straggler's handle while it still runs; forgotten once it has ended.
HANDLE LiveStraggler()
{
    if (g_straggler && WaitForSingleObject(g_straggler.Get(), 0) != WAIT_TIMEOUT)
        g_straggler.Reset();
    return g_straggler.Get();
}

void StopWorker()
{
    if (!IsScrobblingEnabled())
        return;
    StatusLog(0, L"Shutting down AS thread");
    KillTimer(PluginWindow(), kPollTimerId);
    if (g_worker)
    {
        SetEvent(g_workerStop.Get());
        SetEvent(EventShutdown());
        if (WaitForSingleObject(g_worker.Get(), kWorkerStopLimitMs) != WAIT_OBJECT_0)
        {
            WarningMessage(L"TIMEOUT WHILE WAITING FOR THE BACKGROUND THREAD TO TERMINATE!");
            // Nothing is killed: it ends at its next wait, its stop event
            // still set. A worker that waited on an older straggler only
            // touches the queue after that one, so the newest one suffices.
            g_straggler = std::move(g_worker);
        }
        StatusLog(1, L"AS thread killed");
        ResetEvent(EventShutdown());
    }
    SetScrobblingEnabledFlag(false);
    g_worker.Reset();
    g_workerStop.Reset();
    StatusLog(0, L"AS thread shutdown");
}

} // namespace

HRESULT PluginInit(IDispatch* automation, HWND window)
{
    if (g_initialised)
        return S_OK;
    // Timer, hot keys and posted messages all need the window.
    if (window == nullptr)
        return E_INVALIDARG;
    SetHostAutomation(automation);
    SetPluginWindow(window);
    SetTerminating(false);

    const CIni ini(SettingsFilePath());
    const bool firstStart = !ini.FileExists();
    Settings() = ReadSettings(ini);
    OpenLogs(ini);
    if (firstStart)
        PostMessageW(window, kOpenOptionsMessage, 1, 0);
    LoadReplacements();
    // Made once for the life of the module: a worker left running after a
    // stop that timed out never waits on a closed event.
    if (EventShutdown() == nullptr)
        CreateEngineEvents();
    SetHotKeyCommandHandler([window](unsigned command) {
        if (command == kBuddyCommand)
            StartBuddyThread(window);
        else
            StartRecommendationThread();
    });
    if (Settings().EnableBuddySystem)
        AddHotKey(window, Settings().BuddyHotkey, L"", kBuddyCommand);
    if (Settings().EnableRecommendationSystem)
        AddHotKey(window, Settings().RecommendationHotkey, L"", kRecommendationCommand);
    SetScrobblingEnabled(Settings().Enabled);
    StatusLog(0, L"AS plugin initialised");
    CreateChildWindows(window);
    g_initialised = true;
    return S_OK;
}

void SetScrobblingEnabled(bool enabled)
{
    StopWorker();
    if (enabled)
    {
        const CSettingsValues& values = Settings();
        if (values.UserName.empty())
            WarningMessage(
                L"last.fm support enabled but no username defined ... support disabled!");
        else if (values.Password.empty())
            WarningMessage(
                L"last.fm support enabled but no password defined ... support disabled!");
        else
        {
            const CSubmissionSettings settings = MakeSubmissionSettings(values);
            // With a straggler alive the queue is still its own: the new
            // worker loads it once the straggler has saved it and ended.
            const HANDLE predecessor = LiveStraggler();
            if (predecessor == nullptr)
                LoadQueue();
            StatusLog(1, L"AS thread starting");
            g_workerStop = CHandle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
            if (g_workerStop)
                g_worker = StartSubmissionWorker(
                    settings, MakeSubmissionReporter(PluginWindow()),
                    {g_workerStop.Get(), predecessor, values.SubmitTracksOnStartup});
            if (!g_worker)
                WarningMessage(
                    L"Failed to start the background last.fm thread .. support disabled!");
            StatusLog(1, L"AS thread started");
            StartPollTimer(PluginWindow());
            if (predecessor == nullptr && SubmissionQueueCount() != 0 &&
                values.SubmitTracksOnStartup)
                SetEvent(EventData());
        }
    }
    SetScrobblingEnabledFlag(enabled);
}

void PluginTerminate()
{
    try
    {
        CLock lock(HostLock());
        SetTerminating(true);
        StatusLog(0, L"AS plugin terminating");
        StopWorker();
        StatusLog(0, L"AS plugin terminated");
        // Each key deletes its atom; the window's end drops its registration.
        ClearHotKeys();
    }
    catch (...)
    {
        // Terminate never fails the player.
    }
    SetHostAutomation(nullptr);
    // A control made again after Terminate starts the plug-in again.
    g_initialised = false;
}

} // namespace cvas
