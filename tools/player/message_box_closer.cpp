#include "tools/player/message_box_closer.h"

namespace cvas::player
{
namespace
{

constexpr DWORD kLookEveryMs = 200;
// The identifier of a message box's text, on Windows as on Wine.
constexpr int kMessageBoxTextId = 0xFFFF;

std::wstring TextOf(HWND window)
{
    wchar_t text[1024] = {};
    GetWindowTextW(window, text, static_cast<int>(std::size(text)));
    return text;
}

} // namespace

CMessageBoxCloser::CMessageBoxCloser(Reporter report)
    : m_report(std::move(report)), m_stop(CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
    if (m_stop)
        m_thread = CHandle(CreateThread(nullptr, 0, &Watch, this, 0, nullptr));
}

CMessageBoxCloser::~CMessageBoxCloser()
{
    SetEvent(m_stop.Get());
    if (m_thread)
        WaitForSingleObject(m_thread.Get(), INFINITE);
}

DWORD WINAPI CMessageBoxCloser::Watch(void* self)
{
    auto* closer = static_cast<CMessageBoxCloser*>(self);
    while (WaitForSingleObject(closer->m_stop.Get(), kLookEveryMs) == WAIT_TIMEOUT)
    {
        // A box already closed may give its handle to a later window.
        std::erase_if(closer->m_closing, [](HWND box) { return !IsWindow(box); });
        EnumWindows(&VisitWindow, reinterpret_cast<LPARAM>(closer));
    }
    return 0;
}

BOOL CALLBACK CMessageBoxCloser::VisitWindow(HWND window, LPARAM self)
{
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process == GetCurrentProcessId())
        reinterpret_cast<CMessageBoxCloser*>(self)->CloseIfMessageBox(window);
    return TRUE;
}

void CMessageBoxCloser::CloseIfMessageBox(HWND window)
{
    wchar_t className[16] = {};
    GetClassNameW(window, className, static_cast<int>(std::size(className)));
    if (std::wstring(className) != L"#32770" || !IsWindowVisible(window) ||
        m_closing.contains(window))
        return;
    m_closing.insert(window);
    HWND text = GetDlgItem(window, kMessageBoxTextId);
    if (text == nullptr)
    {
        m_report(L"dialog \"" + TextOf(window) + L"\": cancelled");
        PostMessageW(window, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
        return;
    }
    m_report(L"message box \"" + TextOf(window) + L"\": " + TextOf(text));
    const LRESULT defaultId = SendMessageW(window, DM_GETDEFID, 0, 0);
    const WORD button = HIWORD(defaultId) == DC_HASDEFID ? LOWORD(defaultId) : IDOK;
    PostMessageW(window, WM_COMMAND, MAKEWPARAM(button, BN_CLICKED), 0);
}

} // namespace cvas::player
