#include "scrobbler/network/session_keys.h"

#include "support/md5_checksum.h"

namespace cvas
{

std::wstring BuildHandshakeUrl(std::wstring_view base, std::wstring_view clientId,
                               std::wstring_view clientVersion, std::wstring_view userName)
{
    std::wstring url(base);
    url.append(L"&c=").append(clientId);
    url.append(L"&v=").append(clientVersion);
    url.append(L"&u=").append(userName);
    return url;
}

std::string PasswordDigest(std::string_view passwordBytes)
{
    return CMD5Checksum::GetMD5(passwordBytes);
}

std::string SessionResponse(std::string_view passwordDigest, std::string_view challenge)
{
    std::string text(passwordDigest);
    text.append(challenge);
    return CMD5Checksum::GetMD5(text);
}

} // namespace cvas
