#include "buddies/library_match.h"

#include "host/automation_call.h"
#include "host/automation_ids.h"
#include "support/com_values.h"

namespace cvas
{

bool MatchInLibrary(IDispatch* automation, const std::wstring& artist, const std::wstring& name,
                    CLibraryMatch& match)
{
    // No escaping: brackets in a name go into the search as they stand.
    const CBstr query(L"artist=[" + artist + L"] name=[" + name + L"]");
    CComPtr<IDispatch> files;
    int count = 0;
    if (!query ||
        FAILED(CallForObject(automation, kAutomationQueryLibrary, CallKind::Method, files,
                             {TextArgument(query.Get())})) ||
        FAILED(CallForInt(files.Get(), kFileListCount, CallKind::Method, count)) || count < 1)
        return false;
    CComPtr<IDispatch> first;
    CLibraryMatch found;
    if (FAILED(
            CallForObject(files.Get(), kFileListItem, CallKind::Method, first, {IntArgument(0)})) ||
        FAILED(CallForText(first.Get(), kFileName, CallKind::Get, found.fileName)) ||
        FAILED(CallForInt(first.Get(), kFileLibraryKey, CallKind::Method, found.key)))
        return false;
    match = std::move(found);
    return true;
}

} // namespace cvas
