#pragma once
// The text rules of the log files: the line prefix, how a message splits
// into lines, and how old lines are read back.

#include <string>
#include <string_view>
#include <vector>

namespace cvas
{

struct LogTime
{
    int year, month, day, hour, minute, second, milliseconds;
};

// "%02d/%02d/%04d %02d:%02d:%02d.%03d (%9u) > ": day first, then the number
// right-aligned in nine places.
std::wstring LogLinePrefix(const LogTime& time, unsigned number);

// Splits a message at line feeds the way wcstok does: empty pieces vanish.
std::vector<std::wstring> SplitMessageLines(std::wstring_view text);

// Removes trailing space, tab, line feed, vertical tab, form feed and CR.
std::wstring_view TrimTrailingSpace(std::wstring_view text);

// The longest piece the reader takes in one go; a longer line arrives as
// several pieces, each of which becomes a line of its own.
constexpr std::size_t kLogPieceChars = 2047;

// Appends the pieces of one old line (its text with the ending line feed, if
// it had one) to the old lines read so far, trimmed, stopping once they
// number maxLines.
// A line whose length is a whole number of pieces leaves its line feed as a
// last piece of its own, which trims to an empty entry.
void AppendOldLinePieces(std::wstring_view lineWithFeed, std::size_t maxLines,
                         std::vector<std::wstring>& oldLines);

} // namespace cvas
