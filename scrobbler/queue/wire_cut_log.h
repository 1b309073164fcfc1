#pragma once
// The status line for each field of a record that was too long to be sent
// whole.

namespace cvas
{

class CTrackRecord;

void LogWireCuts(const CTrackRecord& record);

} // namespace cvas
