// The process that the crash-safety test kills: it saves ever newer queues
// over Queue.xml until it is killed (or two minutes have passed).
//   queue_saver_child.exe <application-data folder> <inherited ready event>
//                         <number of the first queue>
// It sets the ready event once its first queue is saved.
#include "queue_generations.h"
#include "scrobbler/queue/submission_queue.h"
#include "settings/data_folder.h"
#include "support/message_box.h"

#include <windows.h>

#include <shellapi.h>

#include <cstdint>
#include <memory>
#include <string>

using namespace cvas;

namespace
{

struct LocalFreer
{
    void operator()(wchar_t** arguments) const { LocalFree(arguments); }
};

} // namespace

int main()
{
    int count = 0;
    const std::unique_ptr<wchar_t*, LocalFreer> arguments(
        CommandLineToArgvW(GetCommandLineW(), &count));
    if (!arguments || count != 4)
        return 2;
    const std::wstring appData = arguments.get()[1];
    const auto ready =
        reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(std::stoull(arguments.get()[2])));

    // No logs are open: their lines would become message boxes.
    SetMessageBoxHandler([](const std::wstring&, const wchar_t*, unsigned) { return IDOK; });
    OverrideSpecialFolders(appData, appData);

    const auto first = static_cast<unsigned>(std::stoul(arguments.get()[3]));

    const ULONGLONG end = GetTickCount64() + 120000;
    for (unsigned generation = first; GetTickCount64() < end; ++generation)
    {
        ReplaceQueueContents(test::QueueGeneration(generation));
        if (!SaveQueue())
            return 1;
        if (generation == first)
            SetEvent(ready);
    }
    return 0;
}
