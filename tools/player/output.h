#pragma once
// The player's report: UTF-8 lines on standard output, flushed at once so
// that they interleave in order with what the hosted control prints.

#include <string>

namespace cvas::player
{

void WriteLine(const std::wstring& text);
void WriteError(const std::wstring& text);
// "[   12.345] text": a line at a simulated time.
void WriteEvent(double time, const std::wstring& text);

} // namespace cvas::player
