#pragma once
// The text rules of the log files: the line prefix, how a message splits
// into lines, and how old lines are read back.

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
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

// Cuts the old text of a log file into the entries that a write keeps below
// its new lines: pieces of at most kLogPieceChars characters, trimmed. It is
// fed the decoded text in parts of any size, so that reading a file takes no
// more memory than a part and one piece, however long its lines are.
class CLogPieceReader
{
public:
    explicit CLogPieceReader(std::size_t maxLines) : m_maxLines(maxLines) {}

    // The next part of the text. CR LF is one line feed, even when a part
    // ends between the two; a CR on its own is an ordinary character.
    void Feed(std::wstring_view text);
    // The text has ended: a last line without a line feed counts too.
    void Finish();
    // maxLines entries have been read; further text is not looked at.
    bool Done() const { return m_lines.size() >= m_maxLines; }
    std::vector<std::wstring> TakeLines() { return std::move(m_lines); }

private:
    void AddChar(wchar_t c);
    void EndPiece();

    const std::size_t m_maxLines;
    std::wstring m_piece;
    bool m_pendingCr = false;
    std::vector<std::wstring> m_lines;
};

} // namespace cvas
