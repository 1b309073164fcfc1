#pragma once
// printf-style formatting of wide text into a buffer of fixed size, the way
// every message of the system is made. Use %ls for wide strings and %hs for
// narrow ones: that reads the same on every compiler.

#include <cstdarg>
#include <cstddef>
#include <string>

namespace cvas
{

// The formatted text, cut to bufferChars - 1 characters when it is longer.
// A format that the C runtime cannot apply gives the format itself, cut the
// same way, unless the runtime fails only past the part that is kept. glibc
// refuses a bad conversion and narrow text that the C locale cannot read;
// mingw-w64 writes a bad conversion as it stands and every narrow byte as
// the character of the same value.
std::wstring FormatWideV(std::size_t bufferChars, const wchar_t* format, va_list args);
std::wstring FormatWide(std::size_t bufferChars, const wchar_t* format, ...);

} // namespace cvas
