#pragma once
// The closing report of a run: what was played and what the plug-in asked.

#include <string>
#include <vector>

#include "tools/player/player_model.h"

namespace cvas::player
{

std::vector<std::wstring> SummaryLines(const CPlayerHistory& history);

} // namespace cvas::player
