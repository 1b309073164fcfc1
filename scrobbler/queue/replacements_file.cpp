#include "scrobbler/queue/replacements_file.h"

#include "scrobbler/queue/data_files.h"
#include "scrobbler/queue/document_file.h"
#include "scrobbler/queue/replacements_document.h"
#include "scrobbler/queue/submission_queue.h"
#include "support/logs.h"

#include <mutex>

namespace cvas
{
namespace
{

std::mutex g_tableMutex;
CReplacementTable g_table;

} // namespace

CReplacementTable CurrentReplacements()
{
    std::lock_guard<std::mutex> lock(g_tableMutex);
    return g_table;
}

void SetCurrentReplacements(CReplacementTable table)
{
    std::lock_guard<std::mutex> lock(g_tableMutex);
    g_table = std::move(table);
}

void LoadReplacements()
{
    SetCurrentReplacements({});
    const std::wstring path = ReplacementsFilePath();
    std::wstring damage;
    bool exists = false;
    const CountedHandle<CXmlDocument> document = LoadExistingDocument(path, damage, exists);
    if (!exists)
        return;
    if (document)
    {
        if (!damage.empty())
            StatusLog(0,
                      L"The replacements file %ls is damaged (%ls): its complete entries are used",
                      path.c_str(), damage.c_str());
        CReplacementTable table;
        ReadReplacementsDocument(*document, table);
        SetCurrentReplacements(std::move(table));
    }
    // The count is the submission queue's, not the table's: the line has
    // always read so and is kept as it is.
    StatusLog(0, L"Loaded %d entries", static_cast<int>(SubmissionQueueCount()));
}

bool SaveReplacements()
{
    return SaveDocumentReplacing(*BuildReplacementsDocument(CurrentReplacements()),
                                 ReplacementsFilePath());
}

} // namespace cvas
