#pragma once
// What the test control does with the player's automation object: calls by
// dispatch id whose results it prints as "control: ..." lines, for the
// player's container test to check.

#include <oaidl.h>
#include <windows.h>

namespace cvas::test
{

// Prints a line, flushed at once, so that it keeps its place among the
// player's own lines.
void Say(const char* format, ...);

// Reads what Init can read: the playlist, its current file with all its
// properties, the library query for that file, the skinning switch.
void ProbeAtInit(IDispatch* automation);
// What the player is doing now: state, position, index and file identity.
void ReportPlayback(IDispatch* automation);
// A play request for the library file with this key.
void RequestPlay(IDispatch* automation, LONG key);
// Calls that the player must refuse, with the results they gave.
void ProbeRefusals(IDispatch* automation);
// The skinning switch and a query from a thread of the control's own.
void ProbeFromThread(IDispatch* automation);
// A file object on which the control keeps a reference it never releases.
IDispatch* TakeFileForever(IDispatch* automation);

} // namespace cvas::test
