#pragma once
// The fetch of the user's buddies and of each buddy's recent tracks from the
// web service, one request at a time, its open and its read each bounded by
// 30 seconds and given up when EventShutdown is set. The thread that fetches
// owns the progress window and handles its messages while it waits. The
// recent tracks stay raw until shown.

#include <windows.h>

#include <string>

#include "buddies/buddy_info.h"

namespace cvas
{

class CDlgStatus;
struct CSettingsValues;

// How long each request may take, unless a test says otherwise.
constexpr DWORD kFetchTimeoutMs = 30000;

// What a fetch reads of the settings. The buddy thread reads a copy taken on
// the UI thread when the thread is made, so that the options sheet can
// change the settings while a fetch runs.
struct CBuddyFetchSettings
{
    std::wstring agentName;
    std::wstring buddiesUrl; // "%s" stands for the user's name
    std::wstring userName;
    std::wstring recentTracksUrl; // "%s" stands for a buddy's name
    DWORD timeoutMs = kFetchTimeoutMs;
};

CBuddyFetchSettings MakeBuddyFetchSettings(const CSettingsValues& values);

// Fills list with the buddies of the friends feed, in its order; an answer
// that could not be fetched, or an empty one, leaves it empty.
void FetchBuddies(const CBuddyFetchSettings& settings, CDlgStatus& progress, CBuddyInfo& list);

// A new list of buddies with their raw recent tracks. It becomes the current
// buddy list when at least one buddy's tracks were fetched. A shutdown stops
// the loop; what was fetched before it still counts.
void FetchAll(const CBuddyFetchSettings& settings, CDlgStatus& progress);

} // namespace cvas
