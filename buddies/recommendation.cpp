#include "buddies/recommendation.h"

#include "host/bx_tracks.h"
#include "support/counted_handle.h"

#include <memory>

namespace cvas
{
namespace
{

void RunRecommendationStep(CRecommendationInfo& /*record*/)
{
    // Reserved: what a recommendation holds and how it shows is not settled.
}

} // namespace

void RecommendForCurrentTrack(IDispatch* automation)
{
    if (automation == nullptr)
        return;
    CBXTracks tracks;
    MakeTracks(automation, tracks);
    if (tracks.Current)
    {
        const CountedHandle<CRecommendationInfo> record = std::make_shared<CRecommendationInfo>();
        RunRecommendationStep(*record);
    }
    tracks.ReleaseFiles();
}

} // namespace cvas
