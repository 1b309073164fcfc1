#pragma once
// Conversions between the wide text the system holds and the byte forms it
// reads and writes (UTF-8 and UTF-16LE). wchar_t is a UTF-16 unit on Windows
// and a whole code point elsewhere; these functions are right on both.

#include <cstddef>
#include <string>
#include <string_view>

namespace cvas
{

// Wide text to UTF-8. A lone surrogate becomes U+FFFD.
std::string WideToUtf8(std::wstring_view text);
void AppendWideAsUtf8(std::wstring_view text, std::string& out);

// UTF-8 to wide text. A byte that does not start or continue a well-formed
// sequence is taken as the Latin-1 character of the same value, so text in
// an older single-byte form still reads back character for character.
std::wstring Utf8ToWide(std::string_view bytes);
void AppendUtf8AsWide(std::string_view bytes, std::wstring& out);

// Whether bytes are well-formed UTF-8 throughout (no overlong forms, no
// surrogates, nothing above U+10FFFF, no sequence cut off at the end).
bool IsWellFormedUtf8(std::string_view bytes);

// For text read in pieces: decodes like AppendUtf8AsWide but stops before a
// sequence that the end of bytes cuts off (at most three bytes), so that the
// next piece can complete it. Returns the number of bytes decoded.
std::size_t AppendUtf8AsWidePartial(std::string_view bytes, std::wstring& out);

// One code point (at most U+10FFFF) as wide text: a surrogate pair above
// U+FFFF where wchar_t is a UTF-16 unit. Returns the units written (1 or 2).
std::size_t WriteCodePointAsWide(char32_t c, wchar_t* out);

// Wide text to UTF-16LE bytes (two per unit, surrogate pairs above U+FFFF).
std::string WideToUtf16Le(std::wstring_view text);

// UTF-16LE bytes to wide text; an odd last byte is dropped. On platforms with
// a 32-bit wchar_t, surrogate pairs are joined and a lone surrogate becomes
// U+FFFD.
std::wstring Utf16LeToWide(std::string_view bytes);

// Latin-1 (one byte a character) to wide text and back; characters above
// U+00FF become '?'.
std::wstring Latin1ToWide(std::string_view bytes);
std::string WideToLatin1(std::wstring_view text);

} // namespace cvas
