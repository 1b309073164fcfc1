#pragma once
// How long the player's UI thread spends in the control: Init, and each
// message the control's windows handle (its poll timer among them), for
// the benchmarks of what a user waits for. Everything runs on the UI thread.

#include <windows.h>

#include <cstddef>
#include <string>
#include <vector>

namespace cvas::player
{

// Milliseconds between two QueryPerformanceCounter readings.
class CStopwatch
{
public:
    CStopwatch();
    double ElapsedMs() const;

private:
    LARGE_INTEGER m_start{};
};

class CUiTimings
{
public:
    // A message longer than this holds up the player's drawing for a frame.
    static constexpr double kFrameMs = 16.0;

    void SetInit(double ms) { m_initMs = ms; }
    // The control's poll timer, whose message queues a play that qualifies.
    static constexpr UINT_PTR kPollTimerId = 1;

    // One message that a window of the control handled.
    void AddControlMessage(const MSG& message, double ms);
    // The real time a scenario step took.
    void AddStep(int line, double ms);

    // "timing: ..." lines: Init, each step, the longest message, the longest
    // poll and how many messages took longer than a frame.
    std::vector<std::wstring> Lines() const;

private:
    double m_initMs = 0;
    double m_longestMs = 0;
    double m_longestPollMs = 0;
    UINT m_longestMessage = 0;
    std::size_t m_messages = 0;
    std::size_t m_overFrame = 0;
    std::vector<std::wstring> m_steps;
};

} // namespace cvas::player
