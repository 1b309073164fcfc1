#include "tools/player/command_line.h"

#include <cwchar>

namespace cvas::player
{

const wchar_t kUsage[] =
    L"usage: simulated_player [options] SCENARIO\n"
    L"  --progid ID         the control to host (default CVAudioScrobbler.Interface)\n"
    L"  --no-control        run the scenario with no control\n"
    L"  --screenshot FILE   picture of the main window at the end (.png, else BMP)\n"
    L"  --size WxH          size of the main window (default 900x640)\n"
    L"  --trace             report every automation call\n"
    L"  --timings           report the time of Init, of each step and of the control's\n"
    L"                      longest message\n"
    L"  --timeout SECONDS   real time after which the scenario is cut short (default 600)\n";

namespace
{

bool ReadSize(const std::wstring& text, int& width, int& height)
{
    wchar_t* end = nullptr;
    const long w = std::wcstol(text.c_str(), &end, 10);
    if (end == text.c_str() || (*end != L'x' && *end != L'X'))
        return false;
    const wchar_t* heightText = end + 1;
    const long h = std::wcstol(heightText, &end, 10);
    if (end == heightText || *end != L'\0' || w < 200 || h < 150 || w > 8192 || h > 8192)
        return false;
    width = static_cast<int>(w);
    height = static_cast<int>(h);
    return true;
}

} // namespace

bool ParseCommandLine(const std::vector<std::wstring>& arguments, COptions& options,
                      std::wstring& error)
{
    for (std::size_t i = 0; i < arguments.size(); ++i)
    {
        const std::wstring& argument = arguments[i];
        const auto value = [&]() -> const std::wstring* {
            if (i + 1 >= arguments.size())
            {
                error = argument + L" needs a value";
                return nullptr;
            }
            return &arguments[++i];
        };
        const std::wstring* given = nullptr;
        if (argument == L"--help" || argument == L"-h")
        {
            options.help = true;
        }
        else if (argument == L"--trace")
        {
            options.trace = true;
        }
        else if (argument == L"--timings")
        {
            options.timings = true;
        }
        else if (argument == L"--no-control")
        {
            options.noControl = true;
        }
        else if (argument == L"--progid" || argument == L"--screenshot" || argument == L"--size" ||
                 argument == L"--timeout")
        {
            if ((given = value()) == nullptr)
                return false;
            if (argument == L"--progid")
            {
                options.progId = *given;
            }
            else if (argument == L"--screenshot")
            {
                options.screenshot = *given;
            }
            else if (argument == L"--size" && !ReadSize(*given, options.width, options.height))
            {
                error = L"--size takes WIDTHxHEIGHT, from 200x150 to 8192x8192: " + *given;
                return false;
            }
            else if (argument == L"--timeout")
            {
                wchar_t* end = nullptr;
                const unsigned long seconds = std::wcstoul(given->c_str(), &end, 10);
                if (given->empty() || *end != L'\0' || seconds < 1 || seconds > 86400)
                {
                    error = L"--timeout takes 1 to 86400 seconds: " + *given;
                    return false;
                }
                options.timeoutSeconds = static_cast<unsigned>(seconds);
            }
        }
        else if (argument.rfind(L"--", 0) == 0 || !options.scenario.empty())
        {
            error = L"unexpected argument: " + argument;
            return false;
        }
        else
        {
            options.scenario = argument;
        }
    }
    if (options.scenario.empty() && !options.help)
    {
        error = L"no scenario file given";
        return false;
    }
    if (options.progId.empty() && !options.noControl)
    {
        error = L"--progid is empty";
        return false;
    }
    return true;
}

} // namespace cvas::player
