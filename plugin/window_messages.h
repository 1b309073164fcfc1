#pragma once
// The private messages, control identifiers, timer and hot-key commands of
// the plug-in's control window.

#include <windows.h>

namespace cvas
{

// wParam non-zero: a first start, for which the sheet presets scrobbling on.
constexpr UINT kOpenOptionsMessage = WM_USER + 1;
// wParam the success flag, lParam an owned heap CTrackRecord (the window
// frees it after adding its row).
constexpr UINT kSubmittedRowMessage = WM_USER + 2;
// wParam the library key of the file to play (never 0).
constexpr UINT kPlayRequestMessage = WM_USER + 6;

constexpr UINT kOptionsButtonId = 106;
constexpr UINT kSubmittedListId = 108;
constexpr UINT_PTR kPollTimerId = 1;

constexpr unsigned kBuddyCommand = 110;
constexpr unsigned kRecommendationCommand = 111;

} // namespace cvas
