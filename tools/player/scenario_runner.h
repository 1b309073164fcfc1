#pragma once
// Plays a scenario's steps in the main window's thread, handling window
// messages all along, so that the hosted control's timers and posted
// messages run as they would in a player.

#include <windows.h>

#include <vector>

#include "tools/player/control_host.h"
#include "tools/player/main_window.h"
#include "tools/player/scenario.h"
#include "tools/player/shared_player.h"
#include "tools/player/ui_timings.h"

namespace cvas::player
{

enum class ERunOutcome
{
    Finished, // every step ran, or an "end" step came
    Closed,   // the window was closed or the thread asked to quit
    TimedOut, // the real-time limit came first
};

class CScenarioRunner
{
public:
    // host: null when no control is hosted. deadline: GetTickCount64 value.
    CScenarioRunner(CSharedPlayer& player, CMainWindow& window, const CControlHost* host,
                    ULONGLONG deadline, CUiTimings& timings);

    ERunOutcome Run(const std::vector<CStep>& steps);
    // Handles messages for this many real milliseconds (0: those waiting).
    ERunOutcome Pump(unsigned milliseconds);
    void ShowStatus();

private:
    ERunOutcome RunStep(const CStep& step);
    ERunOutcome LetTimePass(double seconds);
    ERunOutcome Await(const CStep& step);
    ERunOutcome DrainMessages();

    CSharedPlayer& m_player;
    CMainWindow& m_window;
    const CControlHost* m_host;
    ULONGLONG m_deadline;
    CUiTimings& m_timings;
    ULONGLONG m_lastStatus = 0;
};

} // namespace cvas::player
