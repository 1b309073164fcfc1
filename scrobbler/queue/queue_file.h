#pragma once
// Queue.xml on the disk: loading it into a list of records and saving a list
// over it, with their status lines.

#include "scrobbler/queue/track_record.h"

#include <string>

namespace cvas
{

// Empties the queue and fills it from the file, making each record with the
// given table. A missing file, or one without a queue, leaves it empty. A
// damaged file gives every complete track it still holds; the damage is
// logged and the file is kept beside as "Queue.xml.damaged", so that what
// could not be read is not overwritten by the next save.
void LoadQueueFile(const std::wstring& path, const CReplacementTable& replacements,
                   TrackList& queue);

// Replaces the file with the queue's tracks; see SaveDocumentReplacing.
bool SaveQueueFile(const std::wstring& path, const TrackList& queue);

} // namespace cvas
