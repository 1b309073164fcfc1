#pragma once
// The settings as read at start-up, with the edits of the options sheet.
// Touched on the player's UI thread only; a thread of ours gets a copy.

#include "settings/settings_values.h"

namespace cvas
{

CSettingsValues& Settings();

} // namespace cvas
