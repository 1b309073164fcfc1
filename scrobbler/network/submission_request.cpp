#include "scrobbler/network/submission_request.h"

namespace cvas
{
namespace
{

std::string_view UpToNul(std::string_view bytes)
{
    return bytes.substr(0, bytes.find('\0'));
}

} // namespace

std::string BuildPostBody(std::string_view userUtf8, std::string_view sessionResponse,
                          const CPlayWireForms& play)
{
    std::string body;
    body.append("u=").append(userUtf8);
    body.append("&s=").append(sessionResponse);
    body.append("&a[0]=").append(UpToNul(play.artist));
    body.append("&t[0]=").append(UpToNul(play.name));
    body.append("&b[0]=").append(UpToNul(play.album));
    body.append("&m[0]=");
    body.append("&l[0]=").append(UpToNul(play.duration));
    body.append("&i[0]=").append(UpToNul(play.time));
    body.append("&");
    return body;
}

CSubmissionVerdict JudgeSubmissionAnswer(const std::vector<std::string>& lines)
{
    CSubmissionVerdict verdict;
    if (!lines.empty() && lines[0] == "OK")
    {
        verdict.succeeded = verdict.judged = true;
        return verdict;
    }
    for (const std::string& line : lines)
    {
        // A wrong session is the wrong password of a newer server: it is
        // refused, and written to the failed log, as BADAUTH is.
        if (line.compare(0, 7, "FAILED ") == 0 || line == "BADAUTH" || line == "BADSESSION")
            verdict.refusals.push_back(line);
        else if (line == "OK")
            verdict.judged = true;
    }
    verdict.judged = verdict.judged || !verdict.refusals.empty();
    return verdict;
}

} // namespace cvas
