// https_probe URL
//
// GETs URL with WinINet as the plug-in does (InternetOpenUrlW, no flags) and
// prints one line: "status N, B bytes" and exit code 0 when an answer came,
// or "error N" (WinINet's error code) and exit code 1. The TLS trust test
// (trust_certificate_test.sh) runs it in a prefix that trusts the test
// authority and in one that does not.

#include <windows.h>
#include <wininet.h>

#include <cstdio>
#include <initializer_list>

namespace
{

// A probe never waits long: every wait of WinINet is bounded.
constexpr DWORD kTimeoutMilliseconds = 15000;

class InternetHandle
{
public:
    explicit InternetHandle(HINTERNET handle) : m_handle(handle) {}
    ~InternetHandle()
    {
        if (m_handle != nullptr)
        {
            InternetCloseHandle(m_handle);
        }
    }
    InternetHandle(const InternetHandle&) = delete;
    InternetHandle& operator=(const InternetHandle&) = delete;
    HINTERNET get() const { return m_handle; }

private:
    HINTERNET m_handle;
};

int Failed()
{
    const DWORD error = GetLastError();
    std::printf("error %lu\n", error);
    return 1;
}

int Probe(const wchar_t* url)
{
    InternetHandle session(
        InternetOpenW(L"https_probe", INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0));
    if (session.get() == nullptr)
    {
        return Failed();
    }
    DWORD timeout = kTimeoutMilliseconds;
    for (DWORD option : {INTERNET_OPTION_CONNECT_TIMEOUT, INTERNET_OPTION_SEND_TIMEOUT,
                         INTERNET_OPTION_RECEIVE_TIMEOUT})
    {
        InternetSetOptionW(session.get(), option, &timeout, sizeof timeout);
    }
    InternetHandle request(InternetOpenUrlW(session.get(), url, nullptr, 0, 0, 0));
    if (request.get() == nullptr)
    {
        return Failed();
    }
    DWORD status = 0;
    DWORD size = sizeof status;
    if (!HttpQueryInfoW(request.get(), HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &status,
                        &size, nullptr))
    {
        return Failed();
    }
    unsigned long total = 0;
    char buffer[4096];
    for (;;)
    {
        DWORD read = 0;
        if (!InternetReadFile(request.get(), buffer, sizeof buffer, &read))
        {
            return Failed();
        }
        if (read == 0)
        {
            break;
        }
        total += read;
    }
    std::printf("status %lu, %lu bytes\n", status, total);
    return 0;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    if (argc != 2)
    {
        std::fputs("usage: https_probe URL\n", stderr);
        return 2;
    }
    return Probe(argv[1]);
}
