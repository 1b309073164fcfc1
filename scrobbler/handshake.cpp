#include "scrobbler/handshake.h"

#include "scrobbler/response_lines.h"
#include "scrobbler/service_answer.h"
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
    if (!COpenURL::Open(settings.agentName, settings.handshakeUrl, settings.connectTimeoutMs,
                        shutdown, transport))
    {
        transport->ReportFailure();
        return HandshakeResult::NoConnection;
    }
    CServiceExchange exchange;
    exchange.request = transport->Request();
    if (RunExchange(exchange, settings.connectTimeoutMs, shutdown) == ExchangeEnd::Shutdown)
    {
        transport.reset();
        return HandshakeResult::Shutdown;
    }
    lines = LogAnswerLines(exchange.answer);
    if (!PauseUnlessShutdown(ReadInterval(lines), shutdown))
    {
        transport.reset();
        return HandshakeResult::Shutdown;
    }
    return HandshakeResult::Success;
}

} // namespace cvas
