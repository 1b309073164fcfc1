#pragma once
// The layout of Queue.xml: root "queue", one "track" per record in queue
// order, each with "artist", "name", "album", "duration" and "time" in that
// order, holding the record's texts (never the wire forms).

#include "scrobbler/queue/track_record.h"
#include "xml/xml_document.h"

namespace cvas
{

CountedHandle<CXmlDocument> BuildQueueDocument(const TrackList& records);

// Appends a record, made with the given table, for each track that has all
// five fields; a track lacking any of them is skipped. Returns false when the
// document holds no queue.
bool ReadQueueDocument(CXmlDocument& document, const CReplacementTable& replacements,
                       TrackList& records);

} // namespace cvas
