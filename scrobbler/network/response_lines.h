#pragma once
// The service answers handshakes and submissions with a few lines of 8-bit
// text; these read them.

#include <string>
#include <string_view>
#include <vector>

namespace cvas
{

// The most a handshake or a submission reads of an answer, in one read.
constexpr std::size_t kResponseReadBytes = 32767;

// The lines of an answer: split on "\n" and "\r", a run of them being one
// separator, so that no line is empty. The answer ends at its first NUL, as
// 8-bit text does.
std::vector<std::string> SplitResponseLines(std::string_view body);

// A decimal number read the way C's atoi reads it: blanks, a sign, the
// leading digits; 0 when there are none. Clamped to the range of int.
int ReadLeadingNumber(std::string_view text);

// The pause in seconds that the answer asks for: the number after the last
// line that begins with "INTERVAL ", 0 when there is none. A negative number
// asks for no pause at all.
unsigned ReadInterval(const std::vector<std::string>& lines);

} // namespace cvas
