#include "scrobbler/open_url.h"

#include "scrobbler/cancellable_call.h"
#include "scrobbler/error_text.h"
#include "scrobbler/response_lines.h"
#include "support/ansi_text.h"
#include "support/logs.h"

#include <vector>

namespace cvas
{
COpenURL::COpenURL(std::wstring agent, std::wstring url)
    : m_agent(std::move(agent)), m_url(std::move(url))
{
}

COpenURL::~COpenURL()
{
    if (HINTERNET request = m_request.exchange(nullptr))
        InternetCloseHandle(request);
    if (HINTERNET session = m_session.exchange(nullptr))
        InternetCloseHandle(session);
}

bool COpenURL::Open(const std::wstring& agent, const std::wstring& url, DWORD timeoutMs,
                    HANDLE shutdown, std::unique_ptr<COpenURL>& holder)
{
    holder = std::make_unique<COpenURL>(agent, url);
    COpenURL& transport = *holder;
    DWORD threadError = 0;
    switch (
        RunCancellableCall(&COpenURL::ConnectThread, &transport, timeoutMs, shutdown, threadError))
    {
    case CallEnd::Finished:
        transport.m_status = transport.m_request != nullptr ? kConnected : kConnectFailed;
        break;
    case CallEnd::Shutdown:
        transport.m_status = kShutdownRequested;
        break;
    case CallEnd::TimedOut:
        transport.m_status = kTimedOut;
        break;
    case CallEnd::NoThread:
        transport.m_error = threadError;
        transport.m_status = kNoThread;
        break;
    }
    return transport.m_status == kConnected;
}

DWORD WINAPI COpenURL::ConnectThread(void* self)
{
    static_cast<COpenURL*>(self)->Connect();
    return 0;
}

void COpenURL::Connect()
{
    m_session = InternetOpenW(m_agent.c_str(), INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0);
    if (m_session == nullptr)
        return;
    m_request = InternetOpenUrlW(m_session, m_url.c_str(), nullptr, 0, 0, 0);
    if (m_request == nullptr)
        m_error = GetLastError();
}

std::wstring COpenURL::ReadAll()
{
    std::wstring text;
    std::vector<char> chunk(kResponseReadBytes + 1);
    DWORD read = 0;
    while (InternetReadFile(m_request, chunk.data(), kResponseReadBytes, &read) && read > 0)
    {
        chunk[read] = '\0';
        // Each chunk is 8-bit text: it ends at its first NUL.
        text += AnsiToWide(std::string_view(chunk.data()));
    }
    return text;
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
    default:
        break;
    }
}

} // namespace cvas
