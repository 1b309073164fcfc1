#pragma once
// What the handshake and the submission do alike with the service: send,
// read its answer once, log the answer's lines, and pause when it asks for
// an interval. The blocking calls run where the shutdown event can cut them
// short, so that a server that takes a request and never answers cannot hold
// the worker past its stop.

#include <windows.h>
#include <wininet.h>

#include <memory>
#include <string>
#include <vector>

#include "scrobbler/network/shared_internet_handles.h"

namespace cvas
{

enum class ExchangeEnd
{
    Done,     // sent (or not: see sent) and read
    TimedOut, // no answer within the time-out; the handles are closed
    Shutdown, // the shutdown event was set first; the handles are closed
};

struct CExchangeResult
{
    ExchangeEnd end = ExchangeEnd::Done;
    bool sent = false;   // the post went out (always, without a body)
    DWORD sendError = 0; // when it did not: the error, ERROR_INTERNET_TIMEOUT after a time-out
    std::string answer;  // at most 32,767 bytes; the rest is not read
};

// One exchange on the request in handles: the post (when body is given, with
// header) and one read of the answer, on a thread of its own, for at most
// timeoutMs. A thread given up on closes the handles and is left to end by
// itself. A shutdown is logged as "Shutdown signal received!".
CExchangeResult RunExchange(const std::shared_ptr<CSharedInternetHandles>& handles,
                            const wchar_t* header, const std::string* body, DWORD timeoutMs,
                            HANDLE shutdown);

// The lines of an answer, each logged as "  Response: %s".
std::vector<std::string> LogAnswerLines(const std::string& answer);

// Waits seconds on the shutdown event, after logging "Sleeping %u seconds"
// when seconds is not 0. Returns false, after logging "Shutdown signal
// received!", when the event is set.
bool PauseUnlessShutdown(unsigned seconds, HANDLE shutdown);

} // namespace cvas
