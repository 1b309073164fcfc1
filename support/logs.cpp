#include "support/logs.h"

#include "support/message_box.h"
#include "support/wide_format.h"

#include <atomic>
#include <cstdarg>
#include <mutex>

namespace cvas
{
namespace
{

constexpr std::size_t kLogMessageChars = 16384;

std::mutex g_logsMutex;
CountedHandle<CLogFile> g_statusLog;
CountedHandle<CLogFile> g_failedLog;
std::atomic<unsigned> g_statusLogLevel{1};
std::atomic<unsigned> g_statusLineCounter{0};

} // namespace

void CloseLogs()
{
    SetStatusLogFile(nullptr);
    SetFailedLogFile(nullptr);
}

void StatusLog(unsigned level, const wchar_t* format, ...)
{
    if (level > g_statusLogLevel)
        return;
    va_list args;
    va_start(args, format);
    const std::wstring text = FormatWideV(kLogMessageChars, format, args);
    va_end(args);
    if (const CountedHandle<CLogFile> log = StatusLogFile())
        log->WriteCounted(g_statusLineCounter, text);
    else
        InfoMessage(L"%ls", text.c_str());
}

void StatusLogIfOpen(unsigned level, const wchar_t* format, ...)
{
    const CountedHandle<CLogFile> log = StatusLogFile();
    if (!log || level > g_statusLogLevel)
        return;
    va_list args;
    va_start(args, format);
    const std::wstring text = FormatWideV(kLogMessageChars, format, args);
    va_end(args);
    log->WriteCounted(g_statusLineCounter, text);
}

void FailedLog(unsigned number, const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    const std::wstring text = FormatWideV(kLogMessageChars, format, args);
    va_end(args);
    if (const CountedHandle<CLogFile> log = FailedLogFile())
        log->WriteText(number, text);
    else
        InfoMessage(L"%ls", text.c_str());
}

CountedHandle<CLogFile> StatusLogFile()
{
    std::lock_guard<std::mutex> lock(g_logsMutex);
    return g_statusLog;
}

CountedHandle<CLogFile> FailedLogFile()
{
    std::lock_guard<std::mutex> lock(g_logsMutex);
    return g_failedLog;
}

void SetStatusLogFile(CountedHandle<CLogFile> log)
{
    std::lock_guard<std::mutex> lock(g_logsMutex);
    g_statusLog = std::move(log);
}

void SetFailedLogFile(CountedHandle<CLogFile> log)
{
    std::lock_guard<std::mutex> lock(g_logsMutex);
    g_failedLog = std::move(log);
}

unsigned StatusLogLevel()
{
    return g_statusLogLevel;
}
void SetStatusLogLevel(unsigned level)
{
    g_statusLogLevel = level;
}
unsigned StatusLineCounter()
{
    return g_statusLineCounter;
}

} // namespace cvas
