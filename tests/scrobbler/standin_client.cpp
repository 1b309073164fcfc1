#include "scrobbler/standin_client.h"

#include "common/temp_folder.h"
#include "scrobbler/network/internet_handle.h"

#include <windows.h>
#include <wininet.h>

#include <cstdlib>

namespace cvas::test
{
namespace
{

std::wstring Environment(const wchar_t* name)
{
    const wchar_t* value = _wgetenv(name);
    return value != nullptr ? value : L"";
}

std::vector<std::string> FileLines(const std::wstring& path)
{
    std::vector<std::string> lines;
    if (path.empty() || !FileExists(path))
        return lines;
    const std::string bytes = ReadFileBytes(path);
    std::size_t start = 0;
    for (std::size_t end; (end = bytes.find('\n', start)) != std::string::npos; start = end + 1)
        lines.push_back(bytes.substr(start, end - start));
    return lines;
}

} // namespace

std::wstring StandinBase()
{
    const std::wstring port = Environment(L"CVAS_STANDIN_PORT");
    return port.empty() ? L"" : L"http://127.0.0.1:" + port;
}

std::wstring StandinHandshakeUrl()
{
    return StandinBase() + L"/?hs=true&p=1.1&c=tst&v=1.0&u=tester";
}

bool ControlStandin(const std::wstring& command)
{
    const CInternetHandle session(
        InternetOpenW(L"cvas tests", INTERNET_OPEN_TYPE_DIRECT, nullptr, nullptr, 0));
    const CInternetHandle request(
        InternetOpenUrlW(session.Get(), (StandinBase() + L"/control/" + command).c_str(), nullptr,
                         0, INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE, 0));
    if (!request)
        return false;
    char answer[64] = {};
    DWORD read = 0;
    return InternetReadFile(request.Get(), answer, sizeof answer - 1, &read) &&
           std::string(answer, read) == "done\n";
}

std::vector<std::string> RecordedPlays()
{
    return FileLines(Environment(L"CVAS_STANDIN_RECORD"));
}

std::vector<std::string> Journal()
{
    return FileLines(Environment(L"CVAS_STANDIN_JOURNAL"));
}

std::size_t JournalCount(const std::string& kind)
{
    std::size_t count = 0;
    for (const std::string& line : Journal())
        count += line.find("\"kind\":\"" + kind + "\"") != std::string::npos;
    return count;
}

std::vector<std::string> JournalPaths(const std::string& kind)
{
    const std::string path = "\"path\":\"";
    std::vector<std::string> paths;
    for (const std::string& line : Journal())
    {
        const std::size_t start = line.find(path);
        if (line.find("\"kind\":\"" + kind + "\"") == std::string::npos ||
            start == std::string::npos)
            continue;
        const std::size_t first = start + path.size();
        paths.push_back(line.substr(first, line.find('"', first) - first));
    }
    return paths;
}

} // namespace cvas::test
