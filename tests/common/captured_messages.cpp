#include "common/captured_messages.h"

#include "support/message_box.h"

#include <windows.h>

#include <cwchar>
#include <mutex>
#include <utility>

namespace cvas::test
{
namespace
{
std::mutex g_mutex;
std::vector<CapturedMessage> g_messages;
int g_answer = IDOK;
} // namespace

std::wstring Seen(const CapturedMessage& message)
{
    const unsigned icon = message.style & MB_ICONMASK;
    const unsigned type = message.style & MB_TYPEMASK;
    const unsigned rest = message.style & ~(MB_ICONMASK | MB_TYPEMASK);
    std::wstring seen = icon == MB_ICONINFORMATION   ? L"information"
                        : icon == MB_ICONEXCLAMATION ? L"exclamation"
                        : icon == MB_ICONQUESTION    ? L"question"
                        : icon == MB_ICONSTOP        ? L"stop"
                        : icon == 0                  ? L"no icon"
                                                     : L"icon " + std::to_wstring(icon);
    seen += L", ";
    seen += type == MB_OK            ? L"OK"
            : type == MB_OKCANCEL    ? L"OK/Cancel"
            : type == MB_YESNO       ? L"Yes/No"
            : type == MB_YESNOCANCEL ? L"Yes/No/Cancel"
                                     : L"buttons " + std::to_wstring(type);
    if (rest != 0)
    {
        wchar_t bits[16] = {};
        swprintf(bits, 16, L"+0x%x", rest);
        seen += bits;
    }
    return seen + L": " + message.text;
}

void InstallMessageCapture()
{
    SetMessageBoxHandler([](const std::wstring& text, const wchar_t* caption, unsigned style) {
        std::lock_guard<std::mutex> lock(g_mutex);
        g_messages.push_back({text, caption, style});
        return g_answer;
    });
}

std::vector<CapturedMessage> TakeCapturedMessages()
{
    std::lock_guard<std::mutex> lock(g_mutex);
    return std::exchange(g_messages, {});
}

void SetCapturedAnswer(int answer)
{
    std::lock_guard<std::mutex> lock(g_mutex);
    g_answer = answer;
}

} // namespace cvas::test
