// The simulated player: hosts an interface plug-in control in an ActiveX
// container, hands it an automation object and plays a scenario, reporting
// what happens. See README.md.

#include <ole2.h>
#include <shellapi.h>
#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "support/com_ptr.h"
#include "support/win_handle.h"
#include "tools/player/automation_objects.h"
#include "tools/player/command_line.h"
#include "tools/player/control_host.h"
#include "tools/player/main_window.h"
#include "tools/player/message_box_closer.h"
#include "tools/player/output.h"
#include "tools/player/posted_message_report.h"
#include "tools/player/scenario.h"
#include "tools/player/scenario_runner.h"
#include "tools/player/screenshot.h"
#include "tools/player/summary.h"
#include "tools/player/watchdog.h"

using namespace cvas;
using namespace cvas::player;

namespace
{

// Exit codes.
constexpr int kSucceeded = 0;
constexpr int kBadInput = 1;
constexpr int kControlFailed = 2;
constexpr int kTimedOut = 3;
// The watchdog's time beyond the scenario's own limit.
constexpr DWORD kWatchdogGraceMs = 60000;

std::vector<std::wstring> Arguments()
{
    int count = 0;
    wchar_t** list = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::wstring> arguments;
    for (int i = 1; list != nullptr && i < count; ++i)
        arguments.emplace_back(list[i]);
    LocalFree(list);
    return arguments;
}

bool ReadWholeFile(const std::wstring& path, std::string& bytes)
{
    CHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                             FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size;
    if (!file || !GetFileSizeEx(file.Get(), &size) || size.QuadPart > (16 << 20))
        return false;
    bytes.resize(static_cast<std::size_t>(size.QuadPart));
    DWORD read = 0;
    return bytes.empty() ||
           (ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr) &&
            read == bytes.size());
}

class COleSession
{
public:
    COleSession() : m_result(OleInitialize(nullptr)) {}
    ~COleSession()
    {
        if (SUCCEEDED(m_result))
            OleUninitialize();
    }
    COleSession(const COleSession&) = delete;
    COleSession& operator=(const COleSession&) = delete;
    HRESULT Result() const { return m_result; }

private:
    HRESULT m_result;
};

// What the automation objects use. When the plug-in keeps references past
// the end, this is left alive on purpose: a late call must find it.
struct CPlayerState
{
    explicit CPlayerState(CScenario& scenario, bool trace)
        : player(
              CPlayerModel(std::move(scenario.library), std::move(scenario.playlist), WriteEvent)),
          context{player, ledger, trace}
    {
    }
    CSharedPlayer player;
    CRefLedger ledger;
    CAutomationContext context;
};

void Report(CSharedPlayer& player, const std::wstring& text)
{
    player.Access()->Event(text);
}

int RunPlayer(const COptions& options, CScenario& scenario)
{
    CWatchdog watchdog(options.timeoutSeconds * 1000 + kWatchdogGraceMs);
    const ULONGLONG deadline = GetTickCount64() + options.timeoutSeconds * 1000ull;
    COleSession ole;
    if (FAILED(ole.Result()))
    {
        WriteError(L"OleInitialize failed: " + DescribeResult(ole.Result()));
        return kControlFailed;
    }
    const std::vector<CStep> steps = std::move(scenario.steps);
    auto state = std::make_unique<CPlayerState>(scenario, options.trace);
    CSharedPlayer& player = state->player;
    // Simulated time starts with the first step; Init happens at time 0.
    player.SetSpeed(0);

    CMainWindow window;
    std::wstring error;
    if (!window.Create(options.width, options.height, error))
    {
        WriteError(error);
        return kControlFailed;
    }
    auto automation = CComPtr<IDispatch>::Adopt(CreateAutomation(state->context));
    const auto report = [&player](const std::wstring& text) { Report(player, text); };
    CMessageBoxCloser boxCloser(report);
    std::unique_ptr<CPostedMessageReport> postedMessages;
    CControlHost host;
    CUiTimings timings;
    int exitCode = kSucceeded;
    bool hosted = false;
    if (!options.noControl)
    {
        watchdog.SetPhase(L"creating the control");
        if (!host.Create(window.Window(), options.progId, error))
        {
            WriteError(error);
            Report(player, L"no control: " + error);
            exitCode = kControlFailed;
        }
        else
        {
            window.SetContent(host.Container());
            Report(player, L"hosting " + options.progId);
            postedMessages = std::make_unique<CPostedMessageReport>(host.Container(), report);
            watchdog.SetPhase(L"in Init");
            std::wstring detail;
            const CStopwatch initTime;
            const HRESULT init = host.Init(automation.Get(), detail);
            timings.SetInit(initTime.ElapsedMs());
            Report(player,
                   L"Init: " + DescribeResult(init) + (detail.empty() ? L"" : L" " + detail));
            hosted = SUCCEEDED(init);
            if (!hosted)
                exitCode = kControlFailed;
        }
    }

    CScenarioRunner runner(player, window, hosted ? &host : nullptr, deadline, timings);
    if (hosted || options.noControl)
    {
        watchdog.SetPhase(L"playing the scenario");
        player.SetSpeed(1);
        const ERunOutcome outcome = runner.Run(steps);
        if (outcome == ERunOutcome::TimedOut)
        {
            Report(player, L"the time limit of " + std::to_wstring(options.timeoutSeconds) +
                               L" s came first; the scenario is cut short");
            exitCode = kTimedOut;
        }
        else if (outcome == ERunOutcome::Closed)
        {
            Report(player, L"the window was closed; the scenario is cut short");
        }
    }
    // The clock stops with the scenario: the screenshot shows where it ended.
    player.SetSpeed(0);
    runner.ShowStatus();

    if (!options.screenshot.empty())
    {
        watchdog.SetPhase(L"taking the screenshot");
        RedrawWindow(window.Window(), nullptr, nullptr,
                     RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN | RDW_UPDATENOW);
        runner.Pump(0);
        CPicture picture;
        if (CaptureWindow(window.Window(), picture) && SavePicture(options.screenshot, picture))
            Report(player, L"screenshot " + options.screenshot);
        else
            WriteError(L"the screenshot could not be taken or saved: " + options.screenshot);
    }

    long heldAfterTerminate = 0;
    if (hosted)
    {
        watchdog.SetPhase(L"in Terminate");
        std::wstring detail;
        const ULONGLONG called = GetTickCount64();
        const HRESULT terminate = host.Terminate(detail);
        const ULONGLONG took = GetTickCount64() - called;
        Report(player,
               L"Terminate: " + DescribeResult(terminate) + (detail.empty() ? L"" : L" " + detail));
        Report(player, L"Terminate returned after " + std::to_wstring(took) + L" ms");
        heldAfterTerminate = state->ledger.Total() - 1; // less the player's own
    }
    watchdog.SetPhase(L"releasing the control");
    postedMessages.reset();
    host.Destroy();
    runner.Pump(0);
    automation.Release();
    CoFreeUnusedLibraries();
    window.Destroy();

    for (const std::wstring& line : SummaryLines(player.Access()->History()))
        WriteLine(L"summary: " + line);
    if (options.timings)
        for (const std::wstring& line : timings.Lines())
            WriteLine(line);
    if (hosted)
        WriteLine(L"summary: references held after Terminate: " +
                  std::to_wstring(heldAfterTerminate));
    WriteLine(L"summary: references still held by the plug-in: " +
              std::to_wstring(state->ledger.Total()) + L" (" + state->ledger.Describe() + L")");
    if (state->ledger.Total() != 0)
        static_cast<void>(state.release());
    return exitCode;
}

} // namespace

int main()
{
    // Lines end in LF alone, for the Unix tools that read the report.
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    COptions options;
    std::wstring error;
    if (!ParseCommandLine(Arguments(), options, error))
    {
        WriteError(error);
        WriteLine(kUsage);
        return kBadInput;
    }
    if (options.help)
    {
        WriteLine(kUsage);
        return kSucceeded;
    }
    std::string bytes;
    if (!ReadWholeFile(options.scenario, bytes))
    {
        WriteError(L"the scenario file could not be read: " + options.scenario);
        return kBadInput;
    }
    CScenario scenario;
    if (!ParseScenario(bytes, scenario, error))
    {
        WriteError(options.scenario + L": " + error);
        return kBadInput;
    }
    return RunPlayer(options, scenario);
}
