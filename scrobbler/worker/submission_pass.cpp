#include "scrobbler/worker/submission_pass.h"

#include "scrobbler/network/error_text.h"
#include "scrobbler/network/handshake.h"
#include "scrobbler/network/handshake_answer.h"
#include "scrobbler/network/internet_handle.h"
#include "scrobbler/network/response_lines.h"
#include "scrobbler/network/service_answer.h"
#include "scrobbler/network/session_keys.h"
#include "scrobbler/network/shared_internet_handles.h"
#include "scrobbler/network/submission_request.h"
#include "scrobbler/queue/submission_queue.h"
#include "support/ansi_text.h"
#include "support/logs.h"
#include "support/text_encoding.h"

#include <vector>

namespace cvas
{
namespace
{

constexpr wchar_t kPostHeader[] = L"Content-Type:application/x-www-form-urlencoded";

struct CPostTarget
{
    std::wstring host;
    INTERNET_PORT port = 0;
    std::wstring path;
    bool secure = false;
};

struct CPostOutcome
{
    bool shutdown = false;
    bool answered = false;
    std::vector<std::string> lines; // when answered
    std::wstring failure;           // the status text of a failed step
};

CPostTarget MakePostTarget(const CSubmissionTarget& target)
{
    // A port that does not fit in 16 bits is given as 0, which WinINet reads
    // as the default port of the service.
    const bool portFits = target.port > 0 && target.port <= 65535;
    return {AnsiToWide(target.host), static_cast<INTERNET_PORT>(portFits ? target.port : 0),
            AnsiToWide(target.path), target.secure};
}

CPostOutcome PostPlay(HINTERNET session, const CPostTarget& target, const std::string& body,
                      DWORD timeoutMs, HANDLE shutdown)
{
    CPostOutcome outcome;
    const CInternetHandle connection(InternetConnectW(
        session, target.host.c_str(), target.port, nullptr, nullptr, INTERNET_SERVICE_HTTP, 0, 0));
    if (!connection)
    {
        const std::wstring text = ErrorText(GetLastError());
        StatusLog(0, L"Failed to connect to %ls: %ls", target.host.c_str(), text.c_str());
        outcome.failure = L"Failed to connect to " + text;
        return outcome;
    }
    // Not every WinINet passes a session's time-outs on to the requests of
    // its connections; given them here as well, they bound how long a send
    // thread that was given up on lives.
    SetInternetTimeouts(connection.Get(), timeoutMs);
    // Over TLS, WinINet checks the service's certificate as it always does.
    const DWORD flags = INTERNET_FLAG_RELOAD | INTERNET_FLAG_PRAGMA_NOCACHE |
                        (target.secure ? INTERNET_FLAG_SECURE : 0);
    const HINTERNET request = HttpOpenRequestW(connection.Get(), L"POST", target.path.c_str(),
                                               nullptr, nullptr, nullptr, flags, 0);
    if (request == nullptr)
    {
        const std::wstring text = ErrorText(GetLastError());
        StatusLog(0, L"Failed to OpenRequest to %ls: %ls", target.host.c_str(), text.c_str());
        outcome.failure = L"Failed to open request to website";
        return outcome;
    }
    // Shared with the thread that sends and reads, which may outlive this call.
    const auto handles = std::make_shared<CSharedInternetHandles>();
    handles->Keep(CSharedInternetHandles::kRequest, request);
    const CExchangeResult exchange = RunExchange(handles, kPostHeader, &body, timeoutMs, shutdown);
    if (exchange.end == ExchangeEnd::Shutdown)
    {
        outcome.shutdown = true;
        return outcome;
    }
    if (!exchange.sent)
    {
        // A post that is not answered within the time-out has failed its send.
        const std::wstring text = ErrorText(exchange.sendError);
        StatusLog(0, L"Failed to send the request: %ls", text.c_str());
        outcome.failure = L"Failed to send the request";
        return outcome;
    }
    outcome.lines = LogAnswerLines(exchange.answer);
    handles->Close();
    outcome.answered = true;
    // Unlike the handshake, a post makes no pause at all without an interval.
    const unsigned interval = ReadInterval(outcome.lines);
    if (interval != 0 && !PauseUnlessShutdown(interval, shutdown))
        outcome.shutdown = true;
    return outcome;
}

} // namespace

void RunSubmissionPass(const CSubmissionSettings& settings, HANDLE shutdown,
                       const SubmissionReport& report)
{
    std::unique_ptr<COpenURL> transport;
    std::vector<std::string> lines;
    if (Handshake(settings, shutdown, transport, lines) != HandshakeResult::Success)
    {
        StatusLog(0, L"Failed to connect!");
        return;
    }
    const CHandshakeAnswer answer = AcceptHandshake(lines);
    if (answer.submissionUrl.empty())
        return;
    CSubmissionTarget split;
    if (!SplitSubmissionUrl(answer.submissionUrl, split))
    {
        StatusLog(0, L"Malformed submission url: '%ls'", AnsiToWide(answer.submissionUrl).c_str());
        return;
    }
    const CPostTarget target = MakePostTarget(split);
    const std::string sessionResponse = SessionResponse(settings.passwordDigest, answer.challenge);
    const std::string user = WideToUtf8(settings.userName);

    TrackList& queue = SubmissionQueue();
    std::vector<TrackList::iterator> kept;
    for (auto it = queue.begin(); it != queue.end(); ++it)
    {
        const CTrackRecord& record = **it;
        const std::string body =
            BuildPostBody(user, sessionResponse,
                          {record.ArtistBytes(), record.NameBytes(), record.AlbumBytes(),
                           record.DurationBytes(), record.TimeBytes()});
        const std::wstring bodyText = Utf8ToWide(body);
        StatusLog(0, L"Built post reply: '%ls'", bodyText.c_str());

        const CPostOutcome outcome =
            PostPlay(transport->Session(), target, body, settings.connectTimeoutMs, shutdown);
        // Plays the service may have taken already are sent again by a later
        // pass: a play counted twice is better than one lost.
        if (outcome.shutdown)
            return;
        bool succeeded = false;
        bool judged = false;
        std::wstring status = outcome.failure;
        if (outcome.answered)
        {
            const CSubmissionVerdict verdict = JudgeSubmissionAnswer(outcome.lines);
            succeeded = verdict.succeeded;
            judged = verdict.judged;
            const std::wstring firstLine =
                outcome.lines.empty() ? std::wstring() : AnsiToWide(outcome.lines[0]);
            // An answer that neither accepts nor refuses shows its first line.
            status = succeeded ? L"OK" : firstLine;
            for (const std::string& refusal : verdict.refusals)
            {
                status = AnsiToWide(refusal);
                FailedLog(1, L"%ls", firstLine.c_str());
                FailedLog(2, L" ... %ls", bodyText.c_str());
            }
        }
        if (report)
            report(succeeded, record, status);
        // ReattemptFailed decides only about plays the service refused: a
        // play it never judged (no connection, no answer, an answer in no
        // words of the protocol) is kept whatever the setting says.
        if (!succeeded && (settings.reattemptFailed || !judged))
            kept.push_back(it);
    }
    TrackList reattempt;
    for (const auto& it : kept)
        reattempt.splice(reattempt.end(), queue, it);
    ReplaceQueueContents(std::move(reattempt));
    SaveQueue();
}

} // namespace cvas
