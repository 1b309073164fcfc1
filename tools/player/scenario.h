#pragma once
// A scenario for the simulated player: its library, its playlist and the
// steps it plays through. The text format is described in README.md.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tools/player/library_file.h"

namespace cvas::player
{

enum class EStep
{
    Play,      // index, seconds
    Pause,     // seconds
    Resume,    // seconds
    Seek,      // seconds: the new position
    Speed,     // speed
    Stop,      // seconds
    Run,       // seconds
    Wait,      // milliseconds of real time
    Await,     // message (0: library queries), times, milliseconds
    Polls,     // times, milliseconds: until the control's timers ran that many more times
    AwaitFile, // path, text, milliseconds: until the file holds the text
    Send,      // message, wParam, lParam: sent, handled before the step ends
    Post,      // message, wParam, lParam: posted
    End,
};

struct CStep
{
    EStep kind = EStep::End;
    int line = 0;
    std::wstring text; // the line as written, for the report
    std::size_t index = 0;
    double seconds = 0;
    double speed = 1;
    unsigned milliseconds = 0;
    unsigned message = 0;
    unsigned times = 0;
    long long wParam = 0;
    long long lParam = 0;
    std::wstring path;  // AwaitFile: environment variables written %NAME%
    std::string needle; // AwaitFile: the text as UTF-8
};

struct CScenario
{
    std::vector<CLibraryFile> library;
    std::vector<std::size_t> playlist; // indexes into library
    std::vector<CStep> steps;
};

// Reads a scenario from its UTF-8 text (a byte-order mark is skipped). On a
// fault gives false and "line N: what is wrong" in error.
bool ParseScenario(std::string_view utf8, CScenario& scenario, std::wstring& error);

// Limits that keep every step bounded.
constexpr double kMaxStepSeconds = 1e6;
constexpr double kMaxSpeed = 1000;
constexpr unsigned kMaxWaitMilliseconds = 600000;

} // namespace cvas::player
