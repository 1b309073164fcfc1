#pragma once
// An open registry key, closed when it goes, and the writes registration
// makes with it.

#include <windows.h>

#include <string>

namespace cvas
{

class CRegistryKey
{
public:
    CRegistryKey() = default;
    ~CRegistryKey() { Close(); }
    CRegistryKey(const CRegistryKey&) = delete;
    CRegistryKey& operator=(const CRegistryKey&) = delete;

    // Opens or creates parent\path with read and write access.
    LONG Create(HKEY parent, const std::wstring& path);
    LONG Open(HKEY parent, const std::wstring& path, REGSAM access);
    void Close();

    HKEY Get() const { return m_key; }
    // name null or empty: the key's default value.
    LONG SetText(const wchar_t* name, const std::wstring& value) const;
    LONG SetNumber(const wchar_t* name, DWORD value) const;
    bool GetNumber(const wchar_t* name, DWORD& value) const;

private:
    HKEY m_key = nullptr;
};

// Creates parent\path with the given default text (none when value is null).
LONG CreateKeyWithText(HKEY parent, const std::wstring& path, const wchar_t* value);

} // namespace cvas
