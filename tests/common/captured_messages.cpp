#include "common/captured_messages.h"

#include "support/message_box.h"

#include <windows.h>

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
