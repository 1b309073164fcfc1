#pragma once
// The test side of the stand-in service that run_with_standin.sh starts
// beside each network test: its address, its control endpoint, and the
// files in which it records plays and requests.

#include <string>
#include <vector>

namespace cvas::test
{

// "http://127.0.0.1:PORT"; empty when no service was started for this run.
std::wstring StandinBase();
// The handshake URL of the known user "tester" (password "secret").
std::wstring StandinHandshakeUrl();
// Sends a control command ("reset", "script?submit=ok&…"); false on failure.
bool ControlStandin(const std::wstring& command);

// The accepted plays, one JSON object a line, oldest first.
std::vector<std::string> RecordedPlays();
// Every request the service saw, one JSON object a line, oldest first.
std::vector<std::string> Journal();
// How many requests of a kind ("handshake", "submit") it saw.
std::size_t JournalCount(const std::string& kind);
// The paths of the requests of a kind, oldest first (paths without a quote
// or a backslash, which the journal would escape).
std::vector<std::string> JournalPaths(const std::string& kind);

} // namespace cvas::test
