#include "scrobbler/queue/wire_cut_log.h"

#include "scrobbler/queue/track_record.h"
#include "support/logs.h"

namespace cvas
{

void LogWireCuts(const CTrackRecord& record)
{
    for (const CWireCut& cut : record.WireCuts())
        StatusLog(0,
                  L"The %ls of \"%.80ls\" is too long for a request: only its first %u of %u "
                  L"characters are sent",
                  TrackFieldName(cut.field), record.Name().c_str(),
                  static_cast<unsigned>(cut.charactersSent), static_cast<unsigned>(cut.characters));
}

} // namespace cvas
