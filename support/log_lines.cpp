#include "support/log_lines.h"

#include "support/wide_format.h"

namespace cvas
{

std::wstring LogLinePrefix(const LogTime& t, unsigned number)
{
    return FormatWide(64, L"%02d/%02d/%04d %02d:%02d:%02d.%03d (%9u) > ", t.day, t.month, t.year,
                      t.hour, t.minute, t.second, t.milliseconds, number);
}

std::vector<std::wstring> SplitMessageLines(std::wstring_view text)
{
    std::vector<std::wstring> lines;
    std::size_t start = 0;
    while (start <= text.size())
    {
        std::size_t end = text.find(L'\n', start);
        if (end == std::wstring_view::npos)
            end = text.size();
        if (end > start)
            lines.emplace_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

std::wstring_view TrimTrailingSpace(std::wstring_view text)
{
    std::size_t end = text.size();
    while (end > 0)
    {
        const wchar_t c = text[end - 1];
        if (c != L' ' && c != L'\t' && c != L'\n' && c != L'\v' && c != L'\f' && c != L'\r')
            break;
        --end;
    }
    return text.substr(0, end);
}

void CLogPieceReader::Feed(std::wstring_view text)
{
    for (const wchar_t c : text)
    {
        if (Done())
            return;
        if (m_pendingCr)
        {
            m_pendingCr = false;
            if (c == L'\n')
            {
                EndPiece();
                continue;
            }
            AddChar(L'\r');
        }
        if (c == L'\r')
            m_pendingCr = true;
        else if (c == L'\n')
            EndPiece();
        else
            AddChar(c);
    }
}

void CLogPieceReader::Finish()
{
    if (m_pendingCr)
        AddChar(L'\r');
    m_pendingCr = false;
    if (!m_piece.empty())
        EndPiece();
}

// A full piece is ended only when more of its line follows, so that a line
// feed right after it ends it without an empty entry of its own: each write
// reads back what the last one wrote, and kept history must not be pushed
// out by empty entries that grow with every write.
void CLogPieceReader::AddChar(wchar_t c)
{
    if (m_piece.size() == kLogPieceChars)
    {
        // Keep a surrogate pair whole (pairs arise where wchar_t is 16 bits):
        // a half on its own would be written back as U+FFFD.
        const wchar_t last = m_piece.back();
        const bool splitsPair = last >= 0xD800 && last <= 0xDBFF && c >= 0xDC00 && c <= 0xDFFF;
        if (splitsPair)
            m_piece.pop_back();
        EndPiece();
        if (splitsPair)
            m_piece.push_back(last);
    }
    m_piece.push_back(c);
}

void CLogPieceReader::EndPiece()
{
    if (!Done())
        m_lines.emplace_back(TrimTrailingSpace(m_piece));
    m_piece.clear();
}

} // namespace cvas
