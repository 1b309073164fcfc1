#include "scrobbler/document_file.h"

#include "support/logs.h"
#include "support/win_handle.h"

#include <windows.h>

namespace cvas
{
namespace
{

// Every load description of the document ends with this; a parse error
// follows it after ", ". A file that could not be read leaves only the C
// runtime's message.
constexpr std::wstring_view kDescriptionEnd = L" wide chars";
constexpr std::wstring_view kErrorSeparator = L", ";

bool FlushToDisk(const std::wstring& path)
{
    const CHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                   OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return file && FlushFileBuffers(file.Get());
}

} // namespace

CountedHandle<CXmlDocument> LoadExistingDocument(const std::wstring& path, std::wstring& damage)
{
    damage.clear();
    if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES)
        return nullptr;
    CountedHandle<CXmlDocument> document = NewDocument();
    document->Load(path);
    const std::wstring& result = document->GetResult();
    const std::size_t end = result.find(kDescriptionEnd);
    if (end == std::wstring::npos)
    {
        StatusLog(0, L"Could not read %ls: %ls", path.c_str(), result.c_str());
        return nullptr;
    }
    const std::size_t error = end + kDescriptionEnd.size();
    if (std::wstring_view(result).substr(error).starts_with(kErrorSeparator))
        damage = result.substr(error + kErrorSeparator.size());
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
