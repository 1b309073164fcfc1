#include "settings/plugin_mode.h"

#include "support/this_module.h"

#include <windows.h>

namespace cvas
{
namespace
{

constexpr wchar_t kPluginModeValue[] = L"PluginMode";

class CRegKey
{
public:
    CRegKey(const wchar_t* path, REGSAM access)
    {
        if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, access, &m_key) != ERROR_SUCCESS)
            m_key = nullptr;
    }
    ~CRegKey()
    {
        if (m_key != nullptr)
            RegCloseKey(m_key);
    }
    CRegKey(const CRegKey&) = delete;
    CRegKey& operator=(const CRegKey&) = delete;
    HKEY Get() const { return m_key; }

private:
    HKEY m_key = nullptr;
};

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
    CRegKey key(PluginRegistryKey(), KEY_READ);
    if (key.Get() == nullptr)
        return false;
    DWORD value = 0;
    DWORD size = sizeof value;
    DWORD type = 0;
    if (RegQueryValueExW(key.Get(), kPluginModeValue, nullptr, &type,
                         reinterpret_cast<BYTE*>(&value), &size) != ERROR_SUCCESS ||
        type != REG_DWORD)
    {
        return false;
    }
    return value != 0;
}

bool WritePluginMode(bool on)
{
    CRegKey key(PluginRegistryKey(), KEY_SET_VALUE);
    if (key.Get() == nullptr)
        return false;
    const DWORD value = on ? 1 : 0;
    return RegSetValueExW(key.Get(), kPluginModeValue, 0, REG_DWORD,
                          reinterpret_cast<const BYTE*>(&value), sizeof value) == ERROR_SUCCESS;
}

} // namespace cvas
