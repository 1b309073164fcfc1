#include "tools/player/ui_timings.h"

#include <cwchar>

namespace cvas::player
{
namespace
{

std::wstring Ms(double ms)
{
    wchar_t text[32];
    std::swprintf(text, 32, L"%.1f ms", ms);
    return text;
}

} // namespace

CStopwatch::CStopwatch()
{
    QueryPerformanceCounter(&m_start);
}

double CStopwatch::ElapsedMs() const
{
    LARGE_INTEGER now{};
    LARGE_INTEGER frequency{};
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(now.QuadPart - m_start.QuadPart) * 1000.0 /
           static_cast<double>(frequency.QuadPart);
}

void CUiTimings::AddControlMessage(const MSG& message, double ms)
{
    ++m_messages;
    if (ms > kFrameMs)
        ++m_overFrame;
    if (message.message == WM_TIMER && message.wParam == kPollTimerId && ms > m_longestPollMs)
        m_longestPollMs = ms;
    if (ms > m_longestMs)
    {
        m_longestMs = ms;
        m_longestMessage = message.message;
    }
}

void CUiTimings::AddStep(int line, double ms)
{
    m_steps.push_back(L"timing: line " + std::to_wstring(line) + L": " + Ms(ms));
}

std::vector<std::wstring> CUiTimings::Lines() const
{
    std::vector<std::wstring> lines{L"timing: Init: " + Ms(m_initMs)};
    lines.insert(lines.end(), m_steps.begin(), m_steps.end());
    lines.push_back(L"timing: longest message in the control: " + Ms(m_longestMs) + L" (message " +
                    std::to_wstring(m_longestMessage) + L")");
    lines.push_back(L"timing: longest poll: " + Ms(m_longestPollMs));
    lines.push_back(L"timing: messages in the control: " + std::to_wstring(m_messages) + L", " +
                    std::to_wstring(m_overFrame) + L" over 16 ms");
    return lines;
}

} // namespace cvas::player
