#include "scrobbler/service_answer.h"

#include "scrobbler/cancellable_call.h"
#include "scrobbler/response_lines.h"
#include "support/ansi_text.h"
#include "support/logs.h"

#include <cwchar>

namespace cvas
{
namespace
{

// Touches only the exchange: the answer's room is made before it starts.
DWORD WINAPI ExchangeThread(void* argument)
{
    CServiceExchange& exchange = *static_cast<CServiceExchange*>(argument);
    if (exchange.body != nullptr)
    {
        // HttpSendRequestW only reads the body it is given.
        void* body = const_cast<char*>(exchange.body->data());
        if (!HttpSendRequestW(exchange.request, exchange.header,
                              static_cast<DWORD>(std::wcslen(exchange.header)), body,
                              static_cast<DWORD>(exchange.body->size())))
        {
            exchange.sendError = GetLastError();
            return 0;
        }
    }
    exchange.sent = true;
    DWORD read = 0;
    if (!InternetReadFile(exchange.request, exchange.answer.data(),
                          static_cast<DWORD>(kResponseReadBytes), &read))
        read = 0;
    exchange.answer.resize(read);
    return 0;
}

} // namespace

ExchangeEnd RunExchange(CServiceExchange& exchange, DWORD timeoutMs, HANDLE shutdown)
{
    exchange.sent = false;
    exchange.sendError = 0;
    exchange.answer.assign(kResponseReadBytes, '\0');
    DWORD threadError = 0;
    const CallEnd end =
        RunCancellableCall(&ExchangeThread, &exchange, timeoutMs, shutdown, threadError);
    if (end == CallEnd::Finished)
        return ExchangeEnd::Done;
    exchange.answer.clear();
    if (end == CallEnd::Shutdown)
    {
        StatusLog(0, L"Shutdown signal received!");
        return ExchangeEnd::Shutdown;
    }
    exchange.sent = false;
    exchange.sendError = end == CallEnd::TimedOut ? ERROR_INTERNET_TIMEOUT : threadError;
    return ExchangeEnd::Done;
}

std::vector<std::string> LogAnswerLines(const std::string& answer)
{
    std::vector<std::string> lines = SplitResponseLines(answer);
    for (const std::string& line : lines)
        StatusLog(0, L"  Response: %ls", AnsiToWide(line).c_str());
    return lines;
}

bool PauseUnlessShutdown(unsigned seconds, HANDLE shutdown)
{
    if (seconds != 0)
        StatusLog(0, L"Sleeping %u seconds", seconds);
    // INFINITE is one more than the longest wait there is.
    const unsigned long long ms = seconds * 1000ull;
    const DWORD waitMs = ms < INFINITE ? static_cast<DWORD>(ms) : INFINITE - 1;
    if (WaitForSingleObject(shutdown, waitMs) == WAIT_OBJECT_0)
    {
        StatusLog(0, L"Shutdown signal received!");
        return false;
    }
    return true;
}

} // namespace cvas
