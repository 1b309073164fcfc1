#include "settings/log_settings.h"

#include "settings/data_folder.h"
#include "settings/ini_file.h"
#include "settings/settings_values.h"
#include "support/logs.h"

namespace cvas
{
namespace
{

constexpr int kDefaultLineLimit = 1024;

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

} // namespace cvas
