#include "scrobbler/queue/data_files.h"

#include "settings/data_folder.h"

#include <mutex>

namespace cvas
{
namespace
{

std::mutex g_pathsMutex;
std::wstring g_queuePath;
std::wstring g_replacementsPath;

std::wstring KeptPath(std::wstring& kept, const wchar_t* fileName)
{
    std::lock_guard<std::mutex> lock(g_pathsMutex);
    if (kept.empty())
        kept = DataFolder() + fileName;
    return kept;
}

} // namespace

std::wstring QueueFilePath()
{
    return KeptPath(g_queuePath, L"Queue.xml");
}

std::wstring ReplacementsFilePath()
{
    return KeptPath(g_replacementsPath, L"Replacements.xml");
}

void ForgetDataFilePaths()
{
    std::lock_guard<std::mutex> lock(g_pathsMutex);
    g_queuePath.clear();
    g_replacementsPath.clear();
}

} // namespace cvas
