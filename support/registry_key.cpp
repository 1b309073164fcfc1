#include "support/registry_key.h"

namespace cvas
{

LONG CRegistryKey::Create(HKEY parent, const std::wstring& path)
{
    Close();
    return RegCreateKeyExW(parent, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                           KEY_READ | KEY_WRITE, nullptr, &m_key, nullptr);
}

LONG CRegistryKey::Open(HKEY parent, const std::wstring& path, REGSAM access)
{
    Close();
    return RegOpenKeyExW(parent, path.c_str(), 0, access, &m_key);
}

void CRegistryKey::Close()
{
    if (m_key != nullptr)
        RegCloseKey(m_key);
    m_key = nullptr;
}

LONG CRegistryKey::SetText(const wchar_t* name, const std::wstring& value) const
{
    return RegSetValueExW(m_key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                          static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

LONG CRegistryKey::SetNumber(const wchar_t* name, DWORD value) const
{
    return RegSetValueExW(m_key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value),
                          sizeof value);
}

bool CRegistryKey::GetNumber(const wchar_t* name, DWORD& value) const
{
    DWORD type = 0;
    DWORD size = sizeof value;
    return RegQueryValueExW(m_key, name, nullptr, &type, reinterpret_cast<BYTE*>(&value), &size) ==
               ERROR_SUCCESS &&
           type == REG_DWORD;
}

LONG CreateKeyWithText(HKEY parent, const std::wstring& path, const wchar_t* value)
{
    CRegistryKey key;
    const LONG result = key.Create(parent, path);
    if (result != ERROR_SUCCESS || value == nullptr)
        return result;
    return key.SetText(nullptr, value);
}

} // namespace cvas
