#include "scrobbler/network/response_lines.h"

#include <climits>

namespace cvas
{

std::vector<std::string> SplitResponseLines(std::string_view body)
{
    body = body.substr(0, body.find('\0'));
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < body.size())
    {
        const std::size_t end = body.find_first_of("\r\n", start);
        const std::size_t stop = end == std::string_view::npos ? body.size() : end;
        if (stop > start)
            lines.emplace_back(body.substr(start, stop - start));
        start = stop + 1;
    }
    return lines;
}

int ReadLeadingNumber(std::string_view text)
{
    std::size_t i = 0;
    while (i < text.size() && (text[i] == ' ' || (text[i] >= '\t' && text[i] <= '\r')))
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-'))
        negative = text[i++] == '-';
    long long value = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i)
    {
        value = value * 10 + (text[i] - '0');
        if (value > INT_MAX)
            return negative ? INT_MIN : INT_MAX;
    }
    return static_cast<int>(negative ? -value : value);
}

unsigned ReadInterval(const std::vector<std::string>& lines)
{
    constexpr std::string_view kIntervalPrefix = "INTERVAL ";
    int interval = 0;
    for (const std::string& line : lines)
    {
        if (line.compare(0, kIntervalPrefix.size(), kIntervalPrefix) == 0)
            interval = ReadLeadingNumber(std::string_view(line).substr(kIntervalPrefix.size()));
    }
    // A hostile "INTERVAL -1" would otherwise read as a pause of 136 years.
    return interval > 0 ? static_cast<unsigned>(interval) : 0u;
}

} // namespace cvas
