#include "settings/ini_file.h"

#include "settings/setting_texts.h"
#include "support/win_handle.h"

#include <windows.h>

namespace cvas
{
namespace
{
constexpr DWORD kStringBufferChars = 2049;
}

CIni::CIni(std::wstring path) : m_path(std::move(path)) {}

bool CIni::FileExists() const
{
    return GetFileAttributesW(m_path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::wstring CIni::GetString(const wchar_t* section, const wchar_t* key,
                             const wchar_t* defaultValue) const
{
    wchar_t buffer[kStringBufferChars];
    const DWORD length = GetPrivateProfileStringW(section, key, defaultValue, buffer,
                                                  kStringBufferChars, m_path.c_str());
    return std::wstring(buffer, length);
}

int CIni::GetInt(const wchar_t* section, const wchar_t* key, int defaultValue) const
{
    return static_cast<int>(GetPrivateProfileIntW(section, key, defaultValue, m_path.c_str()));
}

bool CIni::GetBool(const wchar_t* section, const wchar_t* key, bool defaultValue) const
{
    return ReadBoolText(GetString(section, key, L""), defaultValue);
}

bool CIni::WriteString(const wchar_t* section, const wchar_t* key, const std::wstring& value) const
{
    CreateAsUtf16IfMissing();
    return WritePrivateProfileStringW(section, key, value.c_str(), m_path.c_str()) != FALSE;
}

bool CIni::WriteBool(const wchar_t* section, const wchar_t* key, bool value) const
{
    return WriteString(section, key, BoolText(value));
}

// The private-profile functions write a file they create in the ANSI code
// page, which turns a Cyrillic or Japanese user name into question marks. A
// file that starts with the UTF-16LE mark is kept in UTF-16LE by them, so the
// plug-in creates its settings file that way.
void CIni::CreateAsUtf16IfMissing() const
{
    CHandle file(CreateFileW(m_path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                             FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file)
        return; // it exists already (or cannot be made, which the write will show)
    static const unsigned char kMark[2] = {0xFF, 0xFE};
    DWORD written = 0;
    WriteFile(file.Get(), kMark, sizeof kMark, &written, nullptr);
}

} // namespace cvas
