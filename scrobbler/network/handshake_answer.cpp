#include "scrobbler/network/handshake_answer.h"

#include "scrobbler/network/response_lines.h"

namespace cvas
{
namespace
{

// The count characters from first on, both clamped to the text; a negative
// count gives nothing, a negative start counts from 0.
std::string_view Mid(std::string_view text, long long first, long long count)
{
    first = first < 0 ? 0 : first;
    if (count <= 0 || first >= static_cast<long long>(text.size()))
        return {};
    return text.substr(static_cast<std::size_t>(first), static_cast<std::size_t>(count));
}

long long Find(std::string_view text, char c, long long from)
{
    if (from >= static_cast<long long>(text.size()))
        return -1;
    const std::size_t at = text.find(c, static_cast<std::size_t>(from < 0 ? 0 : from));
    return at == std::string_view::npos ? -1 : static_cast<long long>(at);
}

bool StartsWithNoCase(std::string_view text, std::string_view prefix)
{
    if (text.size() < prefix.size())
        return false;
    for (std::size_t i = 0; i < prefix.size(); ++i)
    {
        const char c = text[i];
        if ((c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c) != prefix[i])
            return false;
    }
    return true;
}

} // namespace

CHandshakeAnswer AcceptHandshake(const std::vector<std::string>& lines)
{
    CHandshakeAnswer answer;
    if (lines.size() >= 3 && lines[0] == "UPTODATE")
    {
        answer.challenge = lines[1];
        answer.submissionUrl = lines[2];
    }
    return answer;
}

bool SplitSubmissionUrl(std::string_view url, CSubmissionTarget& target)
{
    const long long slash = Find(url, '/', 0);
    if (slash == 0)
        return false;
    const long long pathStart = Find(url, '/', slash + 2);
    // The host text without the slash that begins the path.
    const std::string_view hostText = Mid(url, slash + 2, pathStart - slash - 2);
    target.path = std::string(Mid(url, pathStart, static_cast<long long>(url.size())));
    target.secure = StartsWithNoCase(url, "https://");
    const std::size_t colon = hostText.find(':');
    if (colon == std::string_view::npos)
    {
        target.host = std::string(hostText);
        target.port = target.secure ? 443 : 80;
    }
    else
    {
        target.port = ReadLeadingNumber(hostText.substr(colon + 1));
        target.host = std::string(hostText.substr(0, colon));
    }
    return true;
}

} // namespace cvas
