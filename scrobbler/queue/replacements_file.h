#pragma once
// The process-wide replacement table and Replacements.xml in the data folder.

#include "scrobbler/queue/replacements.h"

namespace cvas
{

// A copy of the table as it is now; records made from it keep their wire
// forms when the table changes later.
CReplacementTable CurrentReplacements();
void SetCurrentReplacements(CReplacementTable table);

// Start-up: empties the table and, when Replacements.xml exists, fills it
// from the file as far as it can be read and logs "Loaded %d entries".
void LoadReplacements();
// Replaces Replacements.xml with the table (the options were confirmed).
bool SaveReplacements();

} // namespace cvas
