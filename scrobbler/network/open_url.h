#pragma once
// A GET through WinINet that the calling thread can give up on: the blocking
// open and the read of the answer each run on a short-lived thread while the
// caller waits for it, for the shutdown event or for a time-out, whichever
// comes first. A caller that owns windows has their messages handled while
// it waits (WaitKind::PumpMessages).

#include <windows.h>
#include <wininet.h>

#include <memory>
#include <string>

#include "scrobbler/network/cancellable_call.h"
#include "scrobbler/network/shared_internet_handles.h"
#include "support/message_wait.h"

namespace cvas
{

// How long the service may take to answer a connect, unless a test says less.
constexpr DWORD kConnectTimeoutMs = 30000;

// Sets WinINet's connect, send and receive time-outs of a session (its
// requests take them over). They bound how long a thread that was given up
// on can live.
void SetInternetTimeouts(HINTERNET session, DWORD timeoutMs);

class COpenURL
{
public:
    enum Status : int
    {
        kNoThread = 0,              // the connect or read thread could not be created (error set)
        kConnectFailed = 1,         // the open failed (error set, 0 when the session failed)
        kTimedOut = 2,              // the connect thread was given up on
        kConnected = 3,             // the request is open
        kShutdownRequested = 4,     // EventShutdown was set while connecting
        kReadTimedOut = 5,          // the read of the answer was given up on
        kReadShutdownRequested = 6, // EventShutdown was set while reading
    };

    COpenURL(std::wstring agent, std::wstring url);
    // Closes the request, then the session, when they were opened.
    virtual ~COpenURL();
    COpenURL(const COpenURL&) = delete;
    COpenURL& operator=(const COpenURL&) = delete;

    // Makes a new transport in holder (dropping any earlier one), opens url
    // on it and waits at most timeoutMs or until shutdown is set. A connect
    // thread that does not end in time is given up on: its handles are
    // closed and it ends by itself, bounded by WinINet's own connect, send
    // and receive time-outs, which are set to timeoutMs as well. True only
    // when connected.
    static bool Open(const std::wstring& agent, const std::wstring& url, DWORD timeoutMs,
                     HANDLE shutdown, WaitKind wait, std::unique_ptr<COpenURL>& holder);

    int Status() const { return m_status; }
    // Whether EventShutdown ended the open or the read.
    bool ShutdownRequested() const
    {
        return m_status == kShutdownRequested || m_status == kReadShutdownRequested;
    }
    DWORD Error() const { return m_error; }
    const std::wstring& Url() const { return m_url; }
    HINTERNET Session() const { return m_handles->Get(CSharedInternetHandles::kSession); }
    HINTERNET Request() const { return m_handles->Get(CSharedInternetHandles::kRequest); }
    // The session and the request, for a thread that reads the answer.
    const std::shared_ptr<CSharedInternetHandles>& Handles() const { return m_handles; }

    // The whole answer of an open request, read in chunks of up to 32,767
    // bytes (each ending at its first NUL), decoded as UTF-8 when it is
    // well-formed UTF-8 and else as text in the ANSI code page. The read is
    // waited for as the open is; false when it was given up on (Status()
    // tells why, the handles are closed and text is left as it was).
    bool ReadAll(DWORD timeoutMs, HANDLE shutdown, WaitKind wait, std::wstring& text);

    // Writes to the status log why the open did not succeed; nothing when it
    // did.
    void ReportFailure() const;

private:
    // Records why a call on a short-lived thread did not finish, with the
    // status its phase gives a shutdown or a time-out; true when it finished.
    bool NoteCallEnd(CallEnd end, DWORD threadError, int shutdownStatus, int timedOutStatus);

    const std::wstring m_agent;
    const std::wstring m_url;
    const std::shared_ptr<CSharedInternetHandles> m_handles;
    DWORD m_error = 0;
    int m_status = kConnectFailed;
};

} // namespace cvas
