#include "settings/plugin_mode.h"

#include "support/registry_key.h"
#include "support/this_module.h"

#include <windows.h>

namespace cvas
{
namespace
{

constexpr wchar_t kPluginModeValue[] = L"PluginMode";

} // namespace

std::wstring ModuleFolder()
{
    std::wstring folder = ThisModulePath();
    folder.erase(folder.find_last_of(L"\\/") + 1);
    return folder;
}

bool IsOlderHostFolder(const std::wstring& moduleFolder)
{
    std::wstring file = moduleFolder;
    if (!file.empty() && file.back() != L'\\')
        file.push_back(L'\\');
    file += L"BX12.XML";
    const DWORD attributes = GetFileAttributesW(file.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

const wchar_t* PluginRegistryKey()
{
    static const bool olderHost = IsOlderHostFolder(ModuleFolder());
    return olderHost ? kOlderHostPluginKey : kPluginKey;
}

bool ReadPluginMode()
{
    CRegistryKey key;
    DWORD value = 0;
    return key.Open(HKEY_LOCAL_MACHINE, PluginRegistryKey(), KEY_READ) == ERROR_SUCCESS &&
           key.GetNumber(kPluginModeValue, value) && value != 0;
}

bool WritePluginMode(bool on)
{
    CRegistryKey key;
    return key.Open(HKEY_LOCAL_MACHINE, PluginRegistryKey(), KEY_SET_VALUE) == ERROR_SUCCESS &&
           key.SetNumber(kPluginModeValue, on ? 1 : 0) == ERROR_SUCCESS;
}

} // namespace cvas
