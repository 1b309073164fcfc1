#include "queue_generations.h"

#include <string>

namespace cvas::test
{
namespace
{

std::wstring ArtistOf(unsigned generation, std::size_t index)
{
    return L"Generation " + std::to_wstring(generation) + L" \x5742\x672C #" +
           std::to_wstring(index);
}

} // namespace

TrackList QueueGeneration(unsigned generation)
{
    TrackList queue;
    const std::size_t count = 1500 + (generation % 4) * 500;
    for (std::size_t i = 0; i < count; ++i)
        queue.push_back(std::make_unique<CTrackRecord>(
            ArtistOf(generation, i), L"Album & <Friends>", L"Track \x0416 " + std::to_wstring(i),
            std::to_wstring(30 + i % 600), L"2024-06-07 08:09:10", CReplacementTable{}));
    return queue;
}

bool IsQueueGeneration(const TrackList& queue, unsigned& generation)
{
    if (queue.empty())
        return false;
    const std::wstring& first = queue.front()->Artist();
    const std::wstring prefix = L"Generation ";
    if (first.rfind(prefix, 0) != 0)
        return false;
    generation = static_cast<unsigned>(std::stoul(first.substr(prefix.size())));
    const TrackList expected = QueueGeneration(generation);
    if (expected.size() != queue.size())
        return false;
    auto record = queue.begin();
    for (const auto& wanted : expected)
    {
        const CTrackRecord& got = **record++;
        if (got.Artist() != wanted->Artist() || got.Album() != wanted->Album() ||
            got.Name() != wanted->Name() || got.Duration() != wanted->Duration() ||
            got.Time() != wanted->Time())
            return false;
    }
    return true;
}

} // namespace cvas::test
