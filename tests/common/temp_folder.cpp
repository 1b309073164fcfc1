#include "common/temp_folder.h"

#include <windows.h>

#include <atomic>
#include <cstdio>
#include <memory>

namespace cvas::test
{
namespace
{

void RemoveTree(const std::wstring& folder)
{
    WIN32_FIND_DATAW found;
    HANDLE search = FindFirstFileW((folder + L"*").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE)
    {
        do
        {
            const std::wstring name = found.cFileName;
            if (name == L"." || name == L"..")
                continue;
            const std::wstring path = folder + name;
            if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
                RemoveTree(path + L"\\");
            else
            {
                SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
                DeleteFileW(path.c_str());
            }
        } while (FindNextFileW(search, &found));
        FindClose(search);
    }
    RemoveDirectoryW(folder.c_str());
}

struct FileCloser
{
    void operator()(FILE* file) const { std::fclose(file); }
};

} // namespace

CTempFolder::CTempFolder()
{
    static std::atomic<unsigned> sequence{0};
    wchar_t base[MAX_PATH];
    GetTempPathW(MAX_PATH, base);
    for (;;)
    {
        wchar_t name[64];
        swprintf(name, 64, L"cvas-%lu-%u-%lu\\", GetCurrentProcessId(), ++sequence, GetTickCount());
        m_path = std::wstring(base) + name;
        if (CreateDirectoryW(m_path.c_str(), nullptr))
            break;
    }
}

CTempFolder::~CTempFolder()
{
    RemoveTree(m_path);
}

std::string ReadFileBytes(const std::wstring& path)
{
    std::unique_ptr<FILE, FileCloser> file(_wfopen(path.c_str(), L"rb"));
    std::string bytes;
    if (!file)
        return bytes;
    char buffer[65536];
    std::size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, file.get())) > 0)
        bytes.append(buffer, got);
    return bytes;
}

void WriteFileBytes(const std::wstring& path, const std::string& bytes)
{
    std::unique_ptr<FILE, FileCloser> file(_wfopen(path.c_str(), L"wb"));
    if (file)
        std::fwrite(bytes.data(), 1, bytes.size(), file.get());
}

bool FileExists(const std::wstring& path)
{
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

} // namespace cvas::test
