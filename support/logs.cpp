#include "support/logs.h"

#include "settings/data_folder.h"
#include "settings/ini_file.h"
#include "settings/settings_values.h"
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
constexpr int kDefaultLineLimit = 1024;

std::mutex g_logsMutex;
CountedHandle<CLogFile> g_statusLog;
CountedHandle<CLogFile> g_failedLog;
std::atomic<unsigned> g_statusLogLevel{1};
std::atomic<unsigned> g_statusLineCounter{0};

} // namespace

void CreateLogFile(const CIni& ini, const wchar_t* section, const wchar_t* filenameKey,
                   const wchar_t* limitKey, const wchar_t* defaultFileName,
                   CountedHandle<CLogFile>& out)
{
    out.reset();
    std::wstring fileName = ini.GetString(section, filenameKey, L"");
    if (fileName.empty() && defaultFileName != nullptr && *defaultFileName != L'\0')
        fileName = DataFolder() + defaultFileName;
    if (fileName.empty())
        return;
    int lineLimit = ini.GetInt(section, limitKey, kDefaultLineLimit);
    if (lineLimit < 2)
        lineLimit = kDefaultLineLimit;
    out = std::make_shared<CLogFile>(std::move(fileName), lineLimit);
}

void OpenLogs(const CIni& ini)
{
    CountedHandle<CLogFile> statusLog;
    CreateLogFile(ini, kGeneralSection, L"StatusLogFilename", L"StatusLogLimit", L"StatusLog.txt",
                  statusLog);
    SetStatusLogFile(statusLog);
    if (statusLog)
    {
        // A negative value reads as a huge level, which logs everything.
        SetStatusLogLevel(static_cast<unsigned>(
            ini.GetInt(kGeneralSection, L"StatusLogLevel", static_cast<int>(StatusLogLevel()))));
    }
    StatusLog(0, L"Initialising AS plugin");
    CountedHandle<CLogFile> failedLog;
    CreateLogFile(ini, kGeneralSection, L"FailedLogFilename", L"FailedLogLimit", L"FailedLog.txt",
                  failedLog);
    SetFailedLogFile(failedLog);
}

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
