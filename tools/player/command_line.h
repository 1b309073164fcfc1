#pragma once
// The simulated player's command line.

#include <string>
#include <vector>

namespace cvas::player
{

struct COptions
{
    std::wstring scenario;
    std::wstring progId = L"CVAudioScrobbler.Interface";
    std::wstring screenshot; // .png gives a PNG file, anything else a BMP
    int width = 900;         // of the main window, frame included
    int height = 640;
    bool trace = false;     // report every automation call
    bool timings = false;   // report the UI thread's time in the control
    bool noControl = false; // run the scenario with no control in the window
    unsigned timeoutSeconds = 600;
    bool help = false;
};

extern const wchar_t kUsage[];

// arguments: without the program's own name.
bool ParseCommandLine(const std::vector<std::wstring>& arguments, COptions& options,
                      std::wstring& error);

} // namespace cvas::player
