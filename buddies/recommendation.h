#pragma once
// The recommendation system's fixed points: a record made for the track that
// plays and a step that fills it. The record has no data yet and the step
// does nothing; nothing is shown, fetched or stored.

#include <oaidl.h>

namespace cvas
{

class CRecommendationInfo
{
public:
    virtual ~CRecommendationInfo() = default;
};

// Asks the player for the current track and, when one plays, runs the
// recommendation step on a new record.
void RecommendForCurrentTrack(IDispatch* automation);

} // namespace cvas
