#pragma once
// Conversions between wide text and the system's ANSI (multibyte) code page,
// the form in which the service's answers are read and the password is
// hashed.

#include <string>
#include <string_view>

namespace cvas
{

std::wstring AnsiToWide(std::string_view bytes);
// Characters the code page cannot hold become its default character.
std::string WideToAnsi(std::wstring_view text);

} // namespace cvas
