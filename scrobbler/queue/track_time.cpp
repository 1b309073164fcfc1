#include "scrobbler/queue/track_time.h"

#include "scrobbler/queue/track_record.h"

#include <windows.h>

namespace cvas
{

std::wstring CurrentTrackTime(bool useUtc)
{
    SYSTEMTIME now{};
    if (useUtc)
        GetSystemTime(&now);
    else
        GetLocalTime(&now);
    return FormatTrackTime(now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond);
}

} // namespace cvas
