#include "scrobbler/network/service_answer.h"

#include "scrobbler/network/cancellable_call.h"
#include "scrobbler/network/response_lines.h"
#include "support/ansi_text.h"
#include "support/logs.h"

namespace cvas
{
namespace
{

// The exchange's thread: it owns copies of what it sends and the room for
// the answer, and shares the request with the waiting side.
class CExchangeCall : public CCancellableWork
{
public:
    CExchangeCall(std::shared_ptr<CSharedInternetHandles> handles, const wchar_t* header,
                  const std::string* body)
        : m_handles(std::move(handles)), m_header(header != nullptr ? header : L""),
          m_hasBody(body != nullptr), m_body(body != nullptr ? *body : std::string())
    {
        m_result.answer.assign(kResponseReadBytes, '\0');
    }

    void Run() override
    {
        const HINTERNET request = m_handles->Get(CSharedInternetHandles::kRequest);
        if (m_hasBody &&
            !HttpSendRequestW(request, m_header.c_str(), static_cast<DWORD>(m_header.size()),
                              m_body.data(), static_cast<DWORD>(m_body.size())))
        {
            m_result.sendError = GetLastError();
            m_result.answer.clear();
            return;
        }
        m_result.sent = true;
        DWORD read = 0;
        if (!InternetReadFile(request, m_result.answer.data(),
                              static_cast<DWORD>(kResponseReadBytes), &read))
            read = 0;
        m_result.answer.resize(read);
    }

    void GiveUp() override { m_handles->Close(); }

    // Only once Run() has returned.
    CExchangeResult& Result() { return m_result; }

private:
    const std::shared_ptr<CSharedInternetHandles> m_handles;
    const std::wstring m_header;
    const bool m_hasBody;
    std::string m_body; // HttpSendRequestW only reads it
    CExchangeResult m_result;
};

} // namespace

CExchangeResult RunExchange(const std::shared_ptr<CSharedInternetHandles>& handles,
                            const wchar_t* header, const std::string* body, DWORD timeoutMs,
                            HANDLE shutdown)
{
    const auto call = std::make_shared<CExchangeCall>(handles, header, body);
    DWORD threadError = 0;
    // The submission worker, which owns no windows.
    const CallEnd end = RunCancellableCall(call, timeoutMs, shutdown, WaitKind::Plain, threadError);
    if (end == CallEnd::Finished)
        return std::move(call->Result());
    CExchangeResult result;
    switch (end)
    {
    case CallEnd::Shutdown:
        StatusLog(0, L"Shutdown signal received!");
        result.end = ExchangeEnd::Shutdown;
        break;
    case CallEnd::TimedOut:
        result.end = ExchangeEnd::TimedOut;
        result.sendError = ERROR_INTERNET_TIMEOUT;
        break;
    default:
        result.sendError = threadError;
        break;
    }
    return result;
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
