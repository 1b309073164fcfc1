#include "tools/player/posted_message_report.h"

#include <map>

namespace cvas::player
{
namespace
{

// The one report of the player's thread; the hook has no argument of its own.
CPostedMessageReport* g_current = nullptr;
HWND g_container = nullptr;
std::map<UINT, std::size_t> g_counts;

} // namespace

CPostedMessageReport::CPostedMessageReport(HWND container, Reporter report)
    : m_report(std::move(report))
{
    if (g_current != nullptr)
        return;
    m_hook = SetWindowsHookExW(WH_GETMESSAGE, &OnMessage, nullptr, GetCurrentThreadId());
    if (m_hook != nullptr)
    {
        g_current = this;
        g_container = container;
    }
}

CPostedMessageReport::~CPostedMessageReport()
{
    if (m_hook == nullptr)
        return;
    UnhookWindowsHookEx(m_hook);
    g_current = nullptr;
    g_container = nullptr;
}

LRESULT CALLBACK CPostedMessageReport::OnMessage(int code, WPARAM removal, LPARAM message)
{
    const auto* posted = reinterpret_cast<const MSG*>(message);
    if (code != HC_ACTION || removal != PM_REMOVE || g_current == nullptr ||
        posted->hwnd == nullptr || !IsChild(g_container, posted->hwnd))
        return CallNextHookEx(nullptr, code, removal, message);
    if (posted->message == WM_TIMER)
    {
        ++g_counts[WM_TIMER]; // counted only: there is one every poll
    }
    else if (posted->message >= WM_USER && posted->message < WM_APP)
    {
        ++g_counts[posted->message];
        g_current->m_report(L"posted to the control: WM_USER+" +
                            std::to_wstring(posted->message - WM_USER) + L" (" +
                            std::to_wstring(posted->wParam) + L", " +
                            std::to_wstring(posted->lParam) + L")");
    }
    return CallNextHookEx(nullptr, code, removal, message);
}

std::size_t PostedToControlCount(UINT message)
{
    const auto found = g_counts.find(message);
    return found == g_counts.end() ? 0 : found->second;
}

} // namespace cvas::player
