#pragma once
// Dialog templates shown the way the options sheet and the plug-in show
// them, and a check of their layout as it comes out on this screen: texts
// that do not fit their controls, controls outside the dialog or across a
// group box's edge, overlapping controls, inputs without a tab stop and a
// tab order that does not read top to bottom, left to right.

#include <windows.h>

#include <string>
#include <vector>

namespace cvas::layout
{

// A page template (a captioned child) made a visible child of parent without
// its caption, as a property sheet shows it. Returns the page or null.
HWND CreatePageInside(HINSTANCE module, int templateId, HWND parent, DLGPROC procedure);

// One line for each fault found in the dialog's controls, empty when none.
std::vector<std::wstring> CheckDialogLayout(HWND dialog);

} // namespace cvas::layout
