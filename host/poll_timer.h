#pragma once
// The poll of the player: the player tells nothing about playback, so a
// window timer reads its state and current file and has each finished play
// judged once.

#include <windows.h>

namespace cvas
{

constexpr UINT_PTR kPollTimerId = 1;

// Sets the poll timer (kPollTimerId, every Settings().PollTimeout ms) on the
// control window. Returns whether the timer was set.
bool StartPollTimer(HWND window);

// The timer's procedure. It stops the timer, does nothing more once the
// plug-in is terminating, and otherwise polls the player and sets the timer
// again. A failure to reach the player's playback object, playlist or files
// shows its message box (FatalMessage), and the timer then stays off. Any
// other failure ends that poll only. Nothing is ever thrown out of it.
void CALLBACK PollProcedure(HWND window, UINT message, UINT_PTR timerId, DWORD time);

// Forgets the file seen last, so that the next poll takes the current file
// as a new play.
void ResetPlayTracking();

} // namespace cvas
