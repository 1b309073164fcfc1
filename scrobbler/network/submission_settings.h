#pragma once
// What the submission worker needs to know of the user and the service,
// fixed each time scrobbling is switched on.

#include <windows.h>

#include <string>

#include "scrobbler/network/open_url.h"

namespace cvas
{

struct CSettingsValues;

// How long the worker waits before it tries a non-empty queue again.
constexpr DWORD kRetryWaitMs = 30000;

struct CSubmissionSettings
{
    std::wstring agentName;
    std::wstring handshakeUrl;
    std::wstring userName;
    std::string passwordDigest; // 32 lowercase hex digits
    bool reattemptFailed = false;
    // The plug-in keeps these; tests shorten them.
    DWORD connectTimeoutMs = kConnectTimeoutMs;
    DWORD retryWaitMs = kRetryWaitMs;
};

// The handshake URL from url, ClientID, ClientVersion and UserName, and the
// digest of the password taken as text in the ANSI code page.
CSubmissionSettings MakeSubmissionSettings(const CSettingsValues& values);

} // namespace cvas
