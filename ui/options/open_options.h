#pragma once
// The options sheet's one run: the pages get copies of the live settings; on
// "OK" the copies go back, PluginMode and the replacement table included,
// scrobbling is switched as the Enable box says, and the settings and the
// replacements are saved. "Cancel" changes nothing.

#include <windows.h>

#include <functional>

namespace cvas
{

// Stops the worker if it runs and starts it again when enabled (with the
// user name and password now set).
using ApplyEnabledState = std::function<void(bool enabled)>;

// forceEnable: the Enable box starts checked whatever the settings say (the
// first start). Returns whether the sheet was confirmed.
bool OpenOptionsSheet(HWND owner, bool forceEnable, const ApplyEnabledState& applyEnabled);

} // namespace cvas
