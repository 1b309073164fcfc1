#pragma once
// The two short-lived threads of the hot keys: the buddy thread fetches the
// friends' recent tracks and shows them; the recommendation thread looks at
// the track that plays and, for now, does nothing more with it. Each press
// starts a thread of its own; nothing stops a second one while one runs.

#include <windows.h>

namespace cvas
{

// Hot key 110, with the control window that owns the buddy dialog and plays
// what it picks. Warns when the thread cannot be started.
void StartBuddyThread(HWND window);
// Hot key 111. Warns when the thread cannot be started.
void StartRecommendationThread();

} // namespace cvas
