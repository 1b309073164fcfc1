#pragma once
// What a handshake answer opens: the challenge and the submission URL, and
// where that URL points.

#include <string>
#include <string_view>
#include <vector>

namespace cvas
{

struct CHandshakeAnswer
{
    std::string challenge;
    std::string submissionUrl; // empty: no session
};

// Only "UPTODATE" with at least three lines opens a session. An answer that
// begins with "UPDATE " opens none either: the plug-in keeps scrobbling only
// while it speaks the version the service expects.
CHandshakeAnswer AcceptHandshake(const std::vector<std::string>& lines);

struct CSubmissionTarget
{
    std::string host;
    int port = 0;
    std::string path;
    bool secure = false; // posted over TLS
};

// Splits the submission URL into host, port and path. The host text runs
// from just after "//" up to the slash that begins the path; the port is the
// number after its first colon. A host text without a colon is the host
// itself, on the port of the URL's scheme: 443 for "https://", else 80. The
// path keeps every slash it begins with, so "http://h//p" posts to "//p".
// Returns false, leaving target untouched, for a URL that begins with "/".
bool SplitSubmissionUrl(std::string_view url, CSubmissionTarget& target);

} // namespace cvas
