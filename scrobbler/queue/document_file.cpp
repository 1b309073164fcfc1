#include "scrobbler/queue/document_file.h"

#include "support/logs.h"
#include "support/win_handle.h"

#include <windows.h>

namespace cvas
{
namespace
{

bool FlushToDisk(const std::wstring& path)
{
    const CHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                   OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return file && FlushFileBuffers(file.Get());
}

} // namespace

CountedHandle<CXmlDocument> LoadExistingDocument(const std::wstring& path, std::wstring& damage)
{
    bool exists = false;
    return LoadExistingDocument(path, damage, exists);
}

CountedHandle<CXmlDocument> LoadExistingDocument(const std::wstring& path, std::wstring& damage,
                                                 bool& exists)
{
    damage.clear();
    exists = GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
    if (!exists)
        return nullptr;
    CountedHandle<CXmlDocument> document = NewDocument();
    document->Load(path);
    if (!document->IsLoaded())
    {
        StatusLog(0, L"Could not read %ls: %ls", path.c_str(), document->GetResult().c_str());
        return nullptr;
    }
    damage = document->GetParseError();
    return document;
}

bool SaveDocumentReplacing(CXmlDocument& document, const std::wstring& path)
{
    const std::wstring beside = path + L".new";
    if (!document.Save(beside))
    {
        StatusLog(0, L"Could not write %ls: %ls", beside.c_str(), document.GetResult().c_str());
        DeleteFileW(beside.c_str());
        return false;
    }
    if (!FlushToDisk(beside))
    {
        const DWORD error = GetLastError();
        StatusLog(0, L"Could not flush %ls to the disk (error %lu); %ls is left as it was",
                  beside.c_str(), error, path.c_str());
        DeleteFileW(beside.c_str());
        return false;
    }
    if (!MoveFileExW(beside.c_str(), path.c_str(),
                     MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
    {
        const DWORD error = GetLastError();
        StatusLog(0, L"Could not move %ls over %ls (error %lu)", beside.c_str(), path.c_str(),
                  error);
        DeleteFileW(beside.c_str());
        return false;
    }
    return true;
}

} // namespace cvas
