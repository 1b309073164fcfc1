#pragma once
// The texts of a log's lines, as tests compare them.

#include "support/counted_handle.h"
#include "support/log_file.h"

#include <string>
#include <vector>

namespace cvas::test
{

// The text of each line after its "dd/mm/yyyy hh:mm:ss.mmm (%9u) > ",
// newest first. The lines are read under the log's own lock, since another
// thread may rewrite the log meanwhile. Empty when there is no log.
std::vector<std::wstring> LogTexts(const CountedHandle<CLogFile>& log);

} // namespace cvas::test
