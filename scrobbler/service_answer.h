#pragma once
// What the handshake and the submission do alike with the service: send,
// read its answer once, log the answer's lines, and pause when it asks for
// an interval. The blocking calls run where the shutdown event can cut them
// short, so that a server that takes a request and never answers cannot hold
// the worker past its stop.

#include <windows.h>
#include <wininet.h>

#include <string>
#include <vector>

namespace cvas
{

// One exchange on an open request: the post (when there is a body) and one
// read of at most 32,767 bytes (the answer is not read further).
struct CServiceExchange
{
    HINTERNET request = nullptr;
    const wchar_t* header = nullptr; // of the post
    const std::string* body = nullptr;

    // What came of it.
    bool sent = false;
    DWORD sendError = 0;
    std::string answer;
};

enum class ExchangeEnd
{
    Done,     // sent (or not: see sent) and read
    Shutdown, // the shutdown event was set first
};

// Runs the exchange on a thread of its own, for at most timeoutMs: a server
// that takes that long has failed the send with a time-out. A shutdown is
// logged as "Shutdown signal received!".
ExchangeEnd RunExchange(CServiceExchange& exchange, DWORD timeoutMs, HANDLE shutdown);

// The lines of an answer, each logged as "  Response: %s".
std::vector<std::string> LogAnswerLines(const std::string& answer);

// Waits seconds on the shutdown event, after logging "Sleeping %u seconds"
// when seconds is not 0. Returns false, after logging "Shutdown signal
// received!", when the event is set.
bool PauseUnlessShutdown(unsigned seconds, HANDLE shutdown);

} // namespace cvas
