#pragma once
// Access to the private-profile (INI) file that holds the settings.

#include <string>

namespace cvas
{

class CIni
{
public:
    explicit CIni(std::wstring path);

    const std::wstring& Path() const { return m_path; }
    bool FileExists() const;

    // At most 2,048 characters are returned.
    std::wstring GetString(const wchar_t* section, const wchar_t* key,
                           const wchar_t* defaultValue) const;
    int GetInt(const wchar_t* section, const wchar_t* key, int defaultValue) const;
    bool GetBool(const wchar_t* section, const wchar_t* key, bool defaultValue) const;

    bool WriteString(const wchar_t* section, const wchar_t* key, const std::wstring& value) const;
    // Writes "True" or "False".
    bool WriteBool(const wchar_t* section, const wchar_t* key, bool value) const;

private:
    void CreateAsUtf16IfMissing() const;

    std::wstring m_path;
};

} // namespace cvas
