#include "tools/player/scenario_runner.h"

#include "tools/player/posted_message_report.h"

#include <algorithm>
#include <cmath>
#include <cwchar>

namespace cvas::player
{

namespace
{

// Messages handled in one go before the deadlines are looked at again.
constexpr int kMessagesPerDrain = 1000;
// The longest real wait between two looks at the clock and the deadline.
constexpr DWORD kLongestWaitMs = 100;

std::wstring Clock(int seconds)
{
    if (seconds < 0)
        return L"?";
    wchar_t text[32];
    std::swprintf(text, 32, L"%d:%02d", seconds / 60, seconds % 60);
    return text;
}

const wchar_t* StateName(int state)
{
    return state == kPlaying ? L"Playing" : state == kPaused ? L"Paused" : L"Stopped";
}

// Whether the file at path (environment variables expanded) holds needle.
// The file may be rewritten meanwhile: a look that misses is repeated.
bool FileHolds(const std::wstring& path, const std::string& needle)
{
    wchar_t expanded[MAX_PATH * 4];
    const DWORD length = ExpandEnvironmentStringsW(path.c_str(), expanded, MAX_PATH * 4);
    if (length == 0 || length > MAX_PATH * 4)
        return false;
    const HANDLE file =
        CreateFileW(expanded, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    std::string content;
    char chunk[65536];
    DWORD read = 0;
    // A log is capped at a few hundred kilobytes; 64 MB bounds the loop.
    while (content.size() < (64u << 20) && ReadFile(file, chunk, sizeof chunk, &read, nullptr) &&
           read > 0)
        content.append(chunk, read);
    CloseHandle(file);
    return content.find(needle) != std::string::npos;
}

} // namespace

CScenarioRunner::CScenarioRunner(CSharedPlayer& player, CMainWindow& window,
                                 const CControlHost* host, ULONGLONG deadline, CUiTimings& timings)
    : m_player(player), m_window(window), m_host(host), m_deadline(deadline), m_timings(timings)
{
}

ERunOutcome CScenarioRunner::Run(const std::vector<CStep>& steps)
{
    for (const CStep& step : steps)
    {
        m_player.Access()->Event(L"line " + std::to_wstring(step.line) + L": " + step.text);
        if (step.kind == EStep::End)
            break;
        const CStopwatch stepTime;
        const ERunOutcome outcome = RunStep(step);
        m_timings.AddStep(step.line, stepTime.ElapsedMs());
        ShowStatus();
        if (outcome != ERunOutcome::Finished)
            return outcome;
    }
    return ERunOutcome::Finished;
}

ERunOutcome CScenarioRunner::RunStep(const CStep& step)
{
    switch (step.kind)
    {
    case EStep::Play:
        m_player.Access()->Play(step.index);
        return LetTimePass(step.seconds);
    case EStep::Pause:
        m_player.Access()->Pause();
        return LetTimePass(step.seconds);
    case EStep::Resume:
        m_player.Access()->Resume();
        return LetTimePass(step.seconds);
    case EStep::Stop:
        m_player.Access()->Stop();
        return LetTimePass(step.seconds);
    case EStep::Run:
        return LetTimePass(step.seconds);
    case EStep::Seek:
        m_player.Access()->Seek(step.seconds);
        return DrainMessages();
    case EStep::Speed:
        m_player.SetSpeed(step.speed);
        return DrainMessages();
    case EStep::Wait:
        return Pump(step.milliseconds);
    case EStep::Await:
    case EStep::Polls:
    case EStep::AwaitFile:
        return Await(step);
    case EStep::Send:
    case EStep::Post: {
        const HWND target = m_host != nullptr ? m_host->ControlWindow() : nullptr;
        if (target == nullptr)
        {
            m_player.Access()->Event(L"no control window to send to");
            return DrainMessages();
        }
        const auto wParam = static_cast<WPARAM>(step.wParam);
        const auto lParam = static_cast<LPARAM>(step.lParam);
        if (step.kind == EStep::Send)
        {
            const LRESULT result = SendMessageW(target, step.message, wParam, lParam);
            m_player.Access()->Event(L"sent, result " + std::to_wstring(result));
        }
        else if (!PostMessageW(target, step.message, wParam, lParam))
        {
            m_player.Access()->Event(L"the message could not be posted");
        }
        return DrainMessages();
    }
    case EStep::End:
        break;
    }
    return ERunOutcome::Finished;
}

ERunOutcome CScenarioRunner::Await(const CStep& step)
{
    const ULONGLONG end = GetTickCount64() + step.milliseconds;
    // Polls count from this step on; messages and queries from Init on.
    const std::size_t pollsBefore = PostedToControlCount(WM_TIMER);
    const auto count = [&]() -> std::size_t {
        if (step.kind == EStep::AwaitFile)
            return FileHolds(step.path, step.needle) ? 1 : 0;
        if (step.kind == EStep::Polls)
            return PostedToControlCount(WM_TIMER) - pollsBefore;
        if (step.message != 0)
            return PostedToControlCount(step.message);
        return m_player.Access()->History().queries.size();
    };
    for (;;)
    {
        const std::size_t taken = count();
        if (taken >= step.times)
            return ERunOutcome::Finished;
        const ULONGLONG now = GetTickCount64();
        if (now >= end)
        {
            m_player.Access()->Event(L"await: " + std::to_wstring(taken) + L" of " +
                                     std::to_wstring(step.times) + L" came in time");
            return ERunOutcome::Finished;
        }
        const ERunOutcome outcome =
            Pump(static_cast<unsigned>(std::min<ULONGLONG>(end - now, kLongestWaitMs)));
        if (outcome != ERunOutcome::Finished)
            return outcome;
    }
}

ERunOutcome CScenarioRunner::LetTimePass(double seconds)
{
    if (seconds <= 0)
        return DrainMessages();
    if (m_player.Speed() <= 0)
    {
        // A stopped clock: the step's time passes at once.
        m_player.Jump(seconds);
        return DrainMessages();
    }
    const double target = m_player.Access()->Now() + seconds;
    for (;;)
    {
        const double left = target - m_player.Access()->Now();
        if (left <= 0)
            return ERunOutcome::Finished;
        // The speed changes only between steps, so it stays above 0 here.
        const double waitMs = std::ceil(left / m_player.Speed() * 1000.0);
        const ERunOutcome outcome = Pump(
            static_cast<unsigned>(std::clamp(waitMs, 1.0, static_cast<double>(kLongestWaitMs))));
        if (outcome != ERunOutcome::Finished)
            return outcome;
    }
}

ERunOutcome CScenarioRunner::Pump(unsigned milliseconds)
{
    const ULONGLONG end = GetTickCount64() + milliseconds;
    for (;;)
    {
        const ERunOutcome outcome = DrainMessages();
        if (outcome != ERunOutcome::Finished)
            return outcome;
        const ULONGLONG now = GetTickCount64();
        if (now >= end)
            return ERunOutcome::Finished;
        const DWORD wait = static_cast<DWORD>(std::min<ULONGLONG>(end - now, kLongestWaitMs));
        MsgWaitForMultipleObjectsEx(0, nullptr, wait, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    }
}

ERunOutcome CScenarioRunner::DrainMessages()
{
    MSG message;
    // A control that floods the thread with messages does not hold up the
    // steps: what is left after the longest wait is handled in the next go.
    const ULONGLONG start = GetTickCount64();
    for (int handled = 0;
         handled < kMessagesPerDrain && GetTickCount64() - start < kLongestWaitMs &&
         PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);
         ++handled)
    {
        if (message.message == WM_QUIT)
            return ERunOutcome::Closed;
        const HWND control = m_host != nullptr ? m_host->ControlWindow() : nullptr;
        const bool toControl = control != nullptr && message.hwnd != nullptr &&
                               (message.hwnd == control || IsChild(control, message.hwnd));
        const CStopwatch handling;
        TranslateMessage(&message);
        DispatchMessageW(&message);
        if (toControl)
            m_timings.AddControlMessage(message, handling.ElapsedMs());
    }
    if (GetTickCount64() - m_lastStatus >= kLongestWaitMs)
        ShowStatus();
    if (m_window.CloseRequested())
        return ERunOutcome::Closed;
    if (GetTickCount64() >= m_deadline)
        return ERunOutcome::TimedOut;
    return ERunOutcome::Finished;
}

void CScenarioRunner::ShowStatus()
{
    m_lastStatus = GetTickCount64();
    std::wstring text;
    {
        auto model = m_player.Access();
        const CLibraryFile* file = model->CurrentFile();
        text = StateName(model->State());
        if (file != nullptr)
        {
            text += L" " + std::to_wstring(model->CurrentIndex() + 1) + L"/" +
                    std::to_wstring(model->PlaylistSize()) + L": " +
                    FillTemplate(*file, L"[ARTIST] - [NAME]") + L" (" + file->fileName + L")  " +
                    Clock(model->Position()) + L" / " + Clock(file->duration);
        }
        wchar_t clock[64];
        std::swprintf(clock, 64, L"    simulated time %.1f s", model->Now());
        text += clock;
    }
    wchar_t speed[32];
    std::swprintf(speed, 32, L"  speed %gx", m_player.Speed());
    m_window.SetStatus(text + speed);
}

} // namespace cvas::player
