#pragma once
// A minimal ActiveX control for testing the simulated player: a window of
// its own, activated in place by the container, and a dispatch interface
// with Init (one object argument) and Terminate, as the player expects of
// an interface plug-in. Its messages (WM_USER + 6, 50 to 53) make it call
// the player's automation object; see test_control.cpp.

#include <ole2.h>
#include <windows.h>

namespace cvas::test
{

// {2535849E-DB31-42F5-90F9-387A27BEAB9D}
constexpr CLSID kTestControlClsid = {
    0x2535849e, 0xdb31, 0x42f5, {0x90, 0xf9, 0x38, 0x7a, 0x27, 0xbe, 0xab, 0x9d}};
constexpr wchar_t kTestControlProgId[] = L"CvasPlayerTest.Control";

// Objects and server locks alive; the module may unload at zero.
extern LONG g_liveObjects;

// A new control with one reference, as IUnknown.
IUnknown* CreateTestControl();

} // namespace cvas::test
