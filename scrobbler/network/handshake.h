#pragma once
// The protocol 1.1 handshake that opens every submission pass.

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "scrobbler/network/open_url.h"
#include "scrobbler/network/submission_settings.h"

namespace cvas
{

enum class HandshakeResult
{
    Success = 0,
    NoConnection = 1,
    Shutdown = 2,
};

// Opens the handshake URL on transport (whose session the submissions then
// use), reads the answer once into lines and sleeps the interval it asks
// for, on the shutdown event. A shutdown drops the transport.
HandshakeResult Handshake(const CSubmissionSettings& settings, HANDLE shutdown,
                          std::unique_ptr<COpenURL>& transport, std::vector<std::string>& lines);

} // namespace cvas
