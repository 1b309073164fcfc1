#pragma once
// The two logs as the settings file describes them: their files, their line
// limits and the status log's level.

#include "support/counted_handle.h"
#include "support/log_file.h"

namespace cvas
{

class CIni;

// Makes a log from the settings: the file name under filenameKey (default
// the data folder and defaultFileName), the line limit under limitKey
// (default 1024; below 2 means 1024). out stays empty when there is no name.
void CreateLogFile(const CIni& ini, const wchar_t* section, const wchar_t* filenameKey,
                   const wchar_t* limitKey, const wchar_t* defaultFileName,
                   CountedHandle<CLogFile>& out);

// Start-up of the logs: the status log, then StatusLogLevel (only if the
// status log was made), the line "Initialising AS plugin", the failed log.
void OpenLogs(const CIni& ini);

} // namespace cvas
