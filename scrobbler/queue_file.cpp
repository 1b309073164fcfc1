#include "scrobbler/queue_file.h"

#include "scrobbler/document_file.h"
#include "scrobbler/queue_document.h"
#include "scrobbler/wire_cut_log.h"
#include "support/logs.h"

#include <windows.h>

namespace cvas
{

void LoadQueueFile(const std::wstring& path, const CReplacementTable& replacements,
                   TrackList& queue)
{
    queue.clear();
    StatusLog(0, L"Loading queue from %ls", path.c_str());
    if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES)
        return;
    const CountedHandle<CXmlDocument> document = NewDocument();
    const CDocumentLoad load = LoadDocumentFile(*document, path);
    if (!load.read)
    {
        StatusLog(0, L"Could not read %ls: %ls", path.c_str(), load.problem.c_str());
        return;
    }
    if (!ReadQueueDocument(*document, replacements, queue))
        return;
    for (const auto& record : queue)
        LogWireCuts(*record);
    if (!load.problem.empty())
    {
        const std::wstring kept = path + L".damaged";
        CopyFileW(path.c_str(), kept.c_str(), FALSE);
        StatusLog(0,
                  L"The queue file is damaged (%ls): the complete tracks it still holds are "
                  L"loaded, and the file is kept as %ls",
                  load.problem.c_str(), kept.c_str());
    }
    StatusLog(0, L"Loaded %d entries", static_cast<int>(queue.size()));
}

bool SaveQueueFile(const std::wstring& path, const TrackList& queue)
{
    StatusLog(0, L"Saving queue to %ls ... %d entries", path.c_str(),
              static_cast<int>(queue.size()));
    return SaveDocumentReplacing(*BuildQueueDocument(queue), path);
}

} // namespace cvas
