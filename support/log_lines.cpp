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

void AppendOldLinePieces(std::wstring_view lineWithFeed, std::size_t maxLines,
                         std::vector<std::wstring>& oldLines)
{
    for (std::size_t start = 0; start < lineWithFeed.size() && oldLines.size() < maxLines;
         start += kLogPieceChars)
    {
        oldLines.emplace_back(TrimTrailingSpace(lineWithFeed.substr(start, kLogPieceChars)));
    }
}

} // namespace cvas
