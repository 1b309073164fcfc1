#include "scrobbler/network/handshake.h"

#include "scrobbler/network/response_lines.h"
#include "scrobbler/network/service_answer.h"
#include "support/logs.h"

#include <wininet.h>

namespace cvas
{

HandshakeResult Handshake(const CSubmissionSettings& settings, HANDLE shutdown,
                          std::unique_ptr<COpenURL>& transport, std::vector<std::string>& lines)
{
    lines.clear();
    if (InternetAttemptConnect(0) != ERROR_SUCCESS)
    {
        StatusLog(0, L"Could not connect to the internet!");
        return HandshakeResult::NoConnection;
    }
    // On the submission worker, which owns no windows.
    if (!COpenURL::Open(settings.agentName, settings.handshakeUrl, settings.connectTimeoutMs,
                        shutdown, WaitKind::Plain, transport))
    {
        transport->ReportFailure();
        return HandshakeResult::NoConnection;
    }
    const CExchangeResult read =
        RunExchange(transport->Handles(), nullptr, nullptr, settings.connectTimeoutMs, shutdown);
    if (read.end == ExchangeEnd::Shutdown)
    {
        transport.reset();
        return HandshakeResult::Shutdown;
    }
    if (read.end == ExchangeEnd::TimedOut || !read.sent)
    {
        // A service that sent its headers and never its answer has not
        // connected us any more than one that never answered.
        StatusLog(0, L"Timed out while reading the answer of:\n\t%ls", transport->Url().c_str());
        transport.reset();
        return HandshakeResult::NoConnection;
    }
    lines = LogAnswerLines(read.answer);
    if (!PauseUnlessShutdown(ReadInterval(lines), shutdown))
    {
        transport.reset();
        return HandshakeResult::Shutdown;
    }
    return HandshakeResult::Success;
}

} // namespace cvas
