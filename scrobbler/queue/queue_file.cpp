#include "scrobbler/queue/queue_file.h"

#include "scrobbler/queue/document_file.h"
#include "scrobbler/queue/queue_document.h"
#include "scrobbler/queue/wire_cut_log.h"
#include "support/logs.h"

#include <windows.h>

namespace cvas
{

void LoadQueueFile(const std::wstring& path, const CReplacementTable& replacements,
                   TrackList& queue)
{
    queue.clear();
    StatusLog(0, L"Loading queue from %ls", path.c_str());
    std::wstring damage;
    const CountedHandle<CXmlDocument> document = LoadExistingDocument(path, damage);
    if (!document || !ReadQueueDocument(*document, replacements, queue))
        return;
    for (const auto& record : queue)
        LogWireCuts(*record);
    if (!damage.empty())
    {
        const std::wstring kept = path + L".damaged";
        const bool copied = CopyFileW(path.c_str(), kept.c_str(), FALSE) != FALSE;
        StatusLog(
            0,
            L"The queue file is damaged (%ls): the complete tracks it still holds are loaded%ls%ls",
            damage.c_str(), copied ? L", and the file is kept as " : L"",
            copied ? kept.c_str() : L"");
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
