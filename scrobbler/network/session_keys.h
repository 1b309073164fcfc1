#pragma once
// The texts that identify the user to the service: the handshake URL, the
// password digest and the session response.

#include <string>
#include <string_view>

namespace cvas
{

// "base&c=id&v=version&u=user". The four values are pasted as they are, none
// escaped: the service reads the user name exactly as the user typed it.
std::wstring BuildHandshakeUrl(std::wstring_view base, std::wstring_view clientId,
                               std::wstring_view clientVersion, std::wstring_view userName);

// The MD5 of the password (as 8-bit text) in 32 lowercase hex digits.
std::string PasswordDigest(std::string_view passwordBytes);

// The value "s" of a submission: the MD5 of the password digest followed by
// the challenge of the handshake, in 32 lowercase hex digits.
std::string SessionResponse(std::string_view passwordDigest, std::string_view challenge);

} // namespace cvas
