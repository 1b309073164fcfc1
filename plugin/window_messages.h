#pragma once
// The control window's own message and control identifiers. The messages
// that others post to it are declared beside their senders: the submitted
// rows (ui/submitted_rows.h) and the play request (host/play_request.h);
// its timer is the poll's and its hot-key commands are the hot keys'.

#include <windows.h>

namespace cvas
{

// wParam non-zero: a first start, for which the sheet presets scrobbling on.
constexpr UINT kOpenOptionsMessage = WM_USER + 1;

constexpr UINT kOptionsButtonId = 106;
constexpr UINT kSubmittedListId = 108;

} // namespace cvas
