#pragma once
// How setting values are read from and written to their text in Settings.INI.

#include <string>
#include <string_view>

namespace cvas
{

// The boolean reading of a setting: empty gives the default; one character
// is true for "e", "t", "y" or a digit other than "0"; longer texts are true
// for "yes", "true", "enabled" or a leading integer of 1 or more. Letters
// are compared without regard to case.
bool ReadBoolText(std::wstring_view value, bool defaultValue);

// What WriteBool stores.
const wchar_t* BoolText(bool value);

// The leading integer of a text as _wtoi reads it: blanks, a sign, digits;
// clamped to the range of int.
int LeadingInteger(std::wstring_view text);

// The filter is kept on one line: a tab in the file is a line break (CR LF)
// in the plug-in.
std::wstring FilterFromStored(std::wstring_view stored);
std::wstring FilterToStored(std::wstring_view filter);

} // namespace cvas
