#include "scrobbler/network/open_url.h"

#include "scrobbler/network/cancellable_call.h"
#include "scrobbler/network/error_text.h"
#include "scrobbler/network/response_lines.h"
#include "support/ansi_text.h"
#include "support/logs.h"
#include "support/text_encoding.h"

#include <atomic>
#include <vector>

namespace cvas
{
namespace
{

// The connect thread's work: everything it touches is its own or shared.
class CConnectCall : public CCancellableWork
{
public:
    CConnectCall(std::wstring agent, std::wstring url, DWORD timeoutMs,
                 std::shared_ptr<CSharedInternetHandles> handles)
        : m_agent(std::move(agent)), m_url(std::move(url)), m_timeoutMs(timeoutMs),
          m_handles(std::move(handles))
    {
    }

    void Run() override
    {
        const HINTERNET session =
            InternetOpenW(m_agent.c_str(), INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0);
        if (session == nullptr)
            return;
        SetInternetTimeouts(session, m_timeoutMs);
        if (!m_handles->Keep(CSharedInternetHandles::kSession, session))
            return;
        // Given up on from here, the waiting side closes the session, which
        // aborts this open on Windows; elsewhere the time-outs end it.
        const HINTERNET request = InternetOpenUrlW(session, m_url.c_str(), nullptr, 0, 0, 0);
        if (request == nullptr)
            m_error = GetLastError();
        else
            m_handles->Keep(CSharedInternetHandles::kRequest, request);
    }

    void GiveUp() override { m_handles->Close(); }

    DWORD Error() const { return m_error; }

private:
    const std::wstring m_agent;
    const std::wstring m_url;
    const DWORD m_timeoutMs;
    const std::shared_ptr<CSharedInternetHandles> m_handles;
    std::atomic<DWORD> m_error{0};
};

// The read thread's work: the answer goes into a body of its own.
class CReadCall : public CCancellableWork
{
public:
    explicit CReadCall(std::shared_ptr<CSharedInternetHandles> handles)
        : m_handles(std::move(handles))
    {
    }

    void Run() override
    {
        std::vector<char> chunk(kResponseReadBytes + 1);
        DWORD read = 0;
        const HINTERNET request = m_handles->Get(CSharedInternetHandles::kRequest);
        while (InternetReadFile(request, chunk.data(), kResponseReadBytes, &read) && read > 0)
        {
            chunk[read] = '\0';
            // Each chunk is 8-bit text: it ends at its first NUL.
            m_body += std::string_view(chunk.data());
        }
    }

    void GiveUp() override { m_handles->Close(); }

    // Only once Run() has returned.
    const std::string& Body() const { return m_body; }

private:
    const std::shared_ptr<CSharedInternetHandles> m_handles;
    std::string m_body;
};

} // namespace

void SetInternetTimeouts(HINTERNET session, DWORD timeoutMs)
{
    for (const DWORD option : {INTERNET_OPTION_CONNECT_TIMEOUT, INTERNET_OPTION_SEND_TIMEOUT,
                               INTERNET_OPTION_RECEIVE_TIMEOUT})
    {
        DWORD value = timeoutMs;
        InternetSetOptionW(session, option, &value, sizeof value);
    }
}

COpenURL::COpenURL(std::wstring agent, std::wstring url)
    : m_agent(std::move(agent)), m_url(std::move(url)),
      m_handles(std::make_shared<CSharedInternetHandles>())
{
}

COpenURL::~COpenURL()
{
    m_handles->Close();
}

bool COpenURL::Open(const std::wstring& agent, const std::wstring& url, DWORD timeoutMs,
                    HANDLE shutdown, WaitKind wait, std::unique_ptr<COpenURL>& holder)
{
    holder = std::make_unique<COpenURL>(agent, url);
    COpenURL& transport = *holder;
    const auto call = std::make_shared<CConnectCall>(agent, url, timeoutMs, transport.m_handles);
    DWORD threadError = 0;
    if (transport.NoteCallEnd(RunCancellableCall(call, timeoutMs, shutdown, wait, threadError),
                              threadError, kShutdownRequested, kTimedOut))
    {
        transport.m_error = call->Error();
        transport.m_status = transport.Request() != nullptr ? kConnected : kConnectFailed;
    }
    return transport.m_status == kConnected;
}

bool COpenURL::ReadAll(DWORD timeoutMs, HANDLE shutdown, WaitKind wait, std::wstring& text)
{
    const auto call = std::make_shared<CReadCall>(m_handles);
    DWORD threadError = 0;
    if (!NoteCallEnd(RunCancellableCall(call, timeoutMs, shutdown, wait, threadError), threadError,
                     kReadShutdownRequested, kReadTimedOut))
        return false;
    // The feeds are UTF-8 documents. Decoded whole, a character that two
    // chunks share stays whole; a body in another form is read as before.
    const std::string& body = call->Body();
    text = IsWellFormedUtf8(body) ? Utf8ToWide(body) : AnsiToWide(body);
    return true;
}

bool COpenURL::NoteCallEnd(CallEnd end, DWORD threadError, int shutdownStatus, int timedOutStatus)
{
    switch (end)
    {
    case CallEnd::Finished:
        return true;
    case CallEnd::Shutdown:
        m_status = shutdownStatus;
        break;
    case CallEnd::TimedOut:
        m_status = timedOutStatus;
        break;
    case CallEnd::NoThread:
        m_error = threadError;
        m_status = kNoThread;
        break;
    }
    return false;
}

void COpenURL::ReportFailure() const
{
    switch (m_status)
    {
    case kNoThread:
        StatusLog(0, L"Got error %u while trying to create the connect thread for:\n\t%ls\n\t%ls",
                  static_cast<unsigned>(m_error), m_url.c_str(), ErrorText(m_error).c_str());
        break;
    case kConnectFailed:
        StatusLog(0, L"Got error %u while trying to connect to:\n\t%ls\n\t%ls",
                  static_cast<unsigned>(m_error), m_url.c_str(), ErrorText(m_error).c_str());
        break;
    case kTimedOut:
        StatusLog(0, L"Timed out while trying to connect to:\n\t%ls", m_url.c_str());
        break;
    case kShutdownRequested:
        StatusLog(0, L"Shutdown requested while trying to connect to:\n\t%ls", m_url.c_str());
        break;
    case kReadTimedOut:
        StatusLog(0, L"Timed out while reading the answer of:\n\t%ls", m_url.c_str());
        break;
    case kReadShutdownRequested:
        StatusLog(0, L"Shutdown requested while reading the answer of:\n\t%ls", m_url.c_str());
        break;
    default:
        break;
    }
}

} // namespace cvas
