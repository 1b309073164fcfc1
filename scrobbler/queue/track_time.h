#pragma once
// The moment a track qualifies, as the time text of its record.

#include <string>

namespace cvas
{

// Now, in UTC when useUtc is set and in local time otherwise.
std::wstring CurrentTrackTime(bool useUtc);

} // namespace cvas
