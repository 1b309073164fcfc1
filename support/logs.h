#pragma once
// The plug-in's two logs: the status log, with a level test and a running
// line number, and the failed log of refused submissions. A message to a
// log that does not exist is shown in an information box instead.

#include <string>

#include "support/counted_handle.h"
#include "support/log_file.h"

namespace cvas
{

// Releases both logs (module unload); later messages go to message boxes.
void CloseLogs();

// Level 0 is for outcomes and errors, 1 for detail; a message is written when
// its level is not above the status log level. Formats printf-style into
// 16,384 characters; use %ls for wide strings.
void StatusLog(unsigned level, const wchar_t* format, ...);
// As StatusLog, but a message with no status log to go to is dropped rather
// than shown in a box: for lines written where no box may appear.
void StatusLogIfOpen(unsigned level, const wchar_t* format, ...);
// number 1 for the server's answer, 2 for the request that was refused.
void FailedLog(unsigned number, const wchar_t* format, ...);

CountedHandle<CLogFile> StatusLogFile();
CountedHandle<CLogFile> FailedLogFile();
void SetStatusLogFile(CountedHandle<CLogFile> log);
void SetFailedLogFile(CountedHandle<CLogFile> log);

unsigned StatusLogLevel();
void SetStatusLogLevel(unsigned level);
// The number of the last status line written; it counts for the life of the
// module.
unsigned StatusLineCounter();

} // namespace cvas
