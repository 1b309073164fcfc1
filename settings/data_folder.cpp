#include "settings/data_folder.h"

#include <windows.h>

#include <shlobj.h>

#include <mutex>

namespace cvas
{
namespace
{

constexpr wchar_t kProductFolder[] = L"Ostrana\\last.fm";
constexpr wchar_t kSettingsFileName[] = L"Settings.INI";

std::mutex g_folderMutex;
std::wstring g_documentsOverride;
std::wstring g_appDataOverride;
std::wstring g_settingsPath; // empty until found

std::wstring WithBackslash(std::wstring folder)
{
    if (folder.empty() || (folder.back() != L'\\' && folder.back() != L'/'))
        folder.push_back(L'\\');
    return folder;
}

// CSIDL_PERSONAL or CSIDL_APPDATA, created when missing.
std::wstring SpecialFolder(int csidl)
{
    {
        std::lock_guard<std::mutex> lock(g_folderMutex);
        const std::wstring& overridden =
            csidl == CSIDL_PERSONAL ? g_documentsOverride : g_appDataOverride;
        if (!overridden.empty())
        {
            CreateFolderLevels(overridden);
            return overridden;
        }
    }
    wchar_t path[MAX_PATH] = L"";
    SHGetSpecialFolderPathW(nullptr, path, csidl, TRUE);
    return path;
}

} // namespace

void CreateFolderLevels(const std::wstring& folder)
{
    for (std::size_t i = 1; i <= folder.size(); ++i)
    {
        if (i == folder.size() || folder[i] == L'\\' || folder[i] == L'/')
        {
            const std::wstring level = folder.substr(0, i);
            // A drive ("C:") or an existing level simply fails; that is fine.
            if (!level.empty() && level.back() != L':')
                CreateDirectoryW(level.c_str(), nullptr);
        }
    }
}

std::wstring DataFolder()
{
    const std::wstring folder =
        WithBackslash(SpecialFolder(CSIDL_APPDATA)) + kProductFolder + L"\\";
    CreateFolderLevels(folder);
    return folder;
}

std::wstring SettingsFilePath()
{
    {
        std::lock_guard<std::mutex> lock(g_folderMutex);
        if (!g_settingsPath.empty())
            return g_settingsPath;
    }
    std::wstring path =
        WithBackslash(SpecialFolder(CSIDL_PERSONAL)) + kProductFolder + L"\\" + kSettingsFileName;
    if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES)
        path = DataFolder() + kSettingsFileName;
    std::lock_guard<std::mutex> lock(g_folderMutex);
    g_settingsPath = path;
    return path;
}

void OverrideSpecialFolders(const std::wstring& documents, const std::wstring& appData)
{
    std::lock_guard<std::mutex> lock(g_folderMutex);
    g_documentsOverride = documents;
    g_appDataOverride = appData;
    g_settingsPath.clear();
}

} // namespace cvas
