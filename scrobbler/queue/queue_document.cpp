#include "scrobbler/queue/queue_document.h"

#include "scrobbler/queue/saved_list.h"

#include <array>
#include <string_view>
#include <utility>

namespace cvas
{
namespace
{

constexpr std::array<std::wstring_view, 5> kTrackFields = {L"artist", L"name", L"album",
                                                           L"duration", L"time"};

} // namespace

CountedHandle<CXmlDocument> BuildQueueDocument(const TrackList& records)
{
    return BuildSavedList(L"queue", L"track", records, [](const std::unique_ptr<CTrackRecord>& r) {
        return std::array<std::pair<std::wstring_view, std::wstring_view>, 5>{{
            {kTrackFields[0], r->Artist()},
            {kTrackFields[1], r->Name()},
            {kTrackFields[2], r->Album()},
            {kTrackFields[3], r->Duration()},
            {kTrackFields[4], r->Time()},
        }};
    });
}

bool ReadQueueDocument(CXmlDocument& document, const CReplacementTable& replacements,
                       TrackList& records)
{
    return ForEachSavedItem(document, L"queue", L"track", [&] {
        std::array<std::wstring, 5> texts; // artist, name, album, duration, time
        if (!ReadItemFields(document, kTrackFields, texts))
            return;
        records.push_back(std::make_unique<CTrackRecord>(std::move(texts[0]), std::move(texts[2]),
                                                         std::move(texts[1]), std::move(texts[3]),
                                                         std::move(texts[4]), replacements));
    });
}

} // namespace cvas
