#pragma once
// The wire form of a submission field: its UTF-8 bytes percent-escaped as a
// URL path segment is, with "+" escaped too because form decoders read it as
// a blank. The same escaping serves on every platform, so what reaches the
// service never depends on the user's code page.

#include <cstddef>
#include <string>
#include <string_view>

namespace cvas
{

// A wire field and its terminating zero fit a buffer of this many bytes.
constexpr std::size_t kWireFieldBufferBytes = 8192;

// Letters, digits and ! $ ' ( ) * , - . : ; = @ _ ~ go on the wire as they
// are; every other byte is written as "%" and two upper-case hex digits.
bool IsWireSafeByte(unsigned char byte);

struct CWireText
{
    std::string bytes;         // the escaped form
    std::size_t sourceUsed{0}; // how many of the given bytes it holds
    bool cut{false};           // the text did not fit and its end was left out
};

// Escapes the UTF-8 bytes into at most maxBytes. A text whose escaped form
// does not fit is cut before the first character that would pass the limit,
// never inside a UTF-8 sequence.
CWireText EscapeForWire(std::string_view utf8, std::size_t maxBytes = kWireFieldBufferBytes - 1);

} // namespace cvas
