#pragma once
// A fresh folder under the temporary folder, removed with all it holds when
// the object goes.

#include <string>

namespace cvas::test
{

class CTempFolder
{
public:
    CTempFolder();
    ~CTempFolder();
    CTempFolder(const CTempFolder&) = delete;
    CTempFolder& operator=(const CTempFolder&) = delete;

    // The folder with a backslash at the end.
    const std::wstring& Path() const { return m_path; }
    std::wstring File(const std::wstring& name) const { return m_path + name; }

private:
    std::wstring m_path;
};

// Whole-file helpers for checking files byte for byte.
std::string ReadFileBytes(const std::wstring& path);
void WriteFileBytes(const std::wstring& path, const std::string& bytes);
bool FileExists(const std::wstring& path);

} // namespace cvas::test
