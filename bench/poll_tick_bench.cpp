// One poll tick of the plug-in against the simulated player's automation
// objects: the time the player's UI thread spends in the poll procedure, per
// tick, over many ticks. Run under Wine by scripts/bench.sh --poll-tick.
//
// Three kinds of tick are timed apart: the steady tick (the same file plays
// on, below its threshold), the tick that sees a new file, and the tick that
// judges a play (the library query, the field templates and the enqueue).

#include <windows.h>

#include <objbase.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "host/host_state.h"
#include "host/poll_timer.h"
#include "scrobbler/queue/data_files.h"
#include "scrobbler/queue/engine_state.h"
#include "scrobbler/queue/submission_queue.h"
#include "settings/data_folder.h"
#include "settings/live_settings.h"
#include "support/com_ptr.h"
#include "support/logs.h"
#include "tools/player/automation_objects.h"

using namespace cvas;
using namespace cvas::player;

namespace
{

constexpr int kLibraryFiles = 2000;
constexpr int kSteadyTicks = 20000;
constexpr int kChangeTicks = 2000;

double Microseconds(LARGE_INTEGER from, LARGE_INTEGER to)
{
    static const double ticksPerMicrosecond = [] {
        LARGE_INTEGER frequency;
        QueryPerformanceFrequency(&frequency);
        return static_cast<double>(frequency.QuadPart) / 1e6;
    }();
    return static_cast<double>(to.QuadPart - from.QuadPart) / ticksPerMicrosecond;
}

struct CFigures
{
    double median;
    double p90;
    double p99;
};

CFigures Summarise(std::vector<double> times)
{
    std::sort(times.begin(), times.end());
    const auto at = [&times](double share) {
        return times[static_cast<std::size_t>(share * static_cast<double>(times.size() - 1))];
    };
    return {at(0.5), at(0.9), at(0.99)};
}

void Print(const char* what, int ticks, const CFigures& figures)
{
    std::printf("%-34s %7d ticks   median %8.2f us   p90 %8.2f us   p99 %8.2f us\n", what, ticks,
                figures.median, figures.p90, figures.p99);
}

CLibraryFile File(int key)
{
    CLibraryFile file;
    file.key = key;
    file.fileName =
        L"Artist " + std::to_wstring(key % 97) + L" - Title " + std::to_wstring(key) + L".mp3";
    file.identity = L"C:\\Music\\" + file.fileName;
    file.duration = 240;
    file.fields = {{L"ARTIST", L"Artist " + std::to_wstring(key % 97)},
                   {L"ALBUM", L"Album " + std::to_wstring(key % 13)},
                   {L"NAME", L"Title " + std::to_wstring(key)}};
    return file;
}

// One tick as the window timer runs it.
double TimedTick(HWND window)
{
    LARGE_INTEGER before;
    LARGE_INTEGER after;
    QueryPerformanceCounter(&before);
    PollProcedure(window, WM_TIMER, kPollTimerId, 0);
    QueryPerformanceCounter(&after);
    KillTimer(window, kPollTimerId);
    return Microseconds(before, after);
}

} // namespace

int main()
{
    if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)))
        return 1;
    // The plug-in's data in a folder of its own; no status log is open, as
    // with the lowest logging level nothing of a steady tick is written.
    wchar_t temp[MAX_PATH];
    GetTempPathW(MAX_PATH, temp);
    const std::wstring root =
        std::wstring(temp) + L"cvas-poll-tick-" + std::to_wstring(GetCurrentProcessId()) + L"\\";
    CreateDirectoryW(root.c_str(), nullptr);
    OverrideSpecialFolders(root + L"Documents", root + L"AppData");
    ForgetDataFilePaths();
    CreateEngineEvents();

    std::vector<CLibraryFile> library;
    std::vector<std::size_t> playlist;
    for (int key = 1; key <= kLibraryFiles; ++key)
    {
        library.push_back(File(key));
        playlist.push_back(static_cast<std::size_t>(key - 1));
    }
    CSharedPlayer player(
        CPlayerModel(std::move(library), std::move(playlist), [](double, const std::wstring&) {}));
    player.SetSpeed(0);
    CRefLedger ledger;
    CAutomationContext context{player, ledger, false};
    {
        auto automation = CComPtr<IDispatch>::Adopt(CreateAutomation(context));
        HWND window = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                      nullptr, nullptr);
        Settings() = CSettingsValues{};
        SetHostAutomation(automation.Get());
        SetScrobblingEnabledFlag(true);
        SetTerminating(false);
        ResetPlayTracking();

        // Steady: one file plays on below half its length.
        player.Access()->Play(0);
        player.Jump(10);
        TimedTick(window); // the first sight of the file
        std::vector<double> steady;
        for (int tick = 0; tick < kSteadyTicks; ++tick)
            steady.push_back(TimedTick(window));

        // The floor: the timer calls every tick makes, alone; under Wine each
        // one is a call to the server.
        std::vector<double> timerOnly;
        for (int tick = 0; tick < kSteadyTicks; ++tick)
        {
            LARGE_INTEGER before;
            LARGE_INTEGER after;
            QueryPerformanceCounter(&before);
            KillTimer(window, kPollTimerId);
            StartPollTimer(window);
            QueryPerformanceCounter(&after);
            KillTimer(window, kPollTimerId);
            timerOnly.push_back(Microseconds(before, after));
        }

        // A new file each time, then the tick that judges it at 200 of 240 s.
        std::vector<double> changed;
        std::vector<double> judged;
        for (int tick = 0; tick < kChangeTicks; ++tick)
        {
            player.Access()->Play(static_cast<std::size_t>(1 + tick % (kLibraryFiles - 1)));
            changed.push_back(TimedTick(window));
            player.Jump(200);
            judged.push_back(TimedTick(window));
            if (tick % 100 == 99)
                ClearTrackLists(); // the worker would take them
        }
        std::printf("Poll tick against the simulated player (%d library files), "
                    "UI-thread time per tick:\n",
                    kLibraryFiles);
        Print("steady (same file, below its mark)", kSteadyTicks, Summarise(steady));
        Print("  of which KillTimer + SetTimer", kSteadyTicks, Summarise(timerOnly));
        Print("a new file", kChangeTicks, Summarise(changed));
        Print("a play judged and queued", kChangeTicks, Summarise(judged));

        SetHostAutomation(nullptr);
        SetScrobblingEnabledFlag(false);
        DestroyWindow(window);
    }
    ClearTrackLists();
    CloseEngineEvents();
    OverrideSpecialFolders(L"", L"");
    RemoveDirectoryW(root.c_str()); // nothing of a tick is written to it
    CoUninitialize();
    return 0;
}
