#pragma once
// The player model behind one lock, on a clock that runs at a chosen
// multiple of real time. The plug-in calls the automation objects from its
// own threads too, so every reader goes through Access, which also brings
// the simulated time up to date.

#include <cstdint>
#include <functional>
#include <mutex>

#include "tools/player/player_model.h"

namespace cvas::player
{

class CSharedPlayer
{
public:
    using CMilliseconds = std::function<std::uint64_t()>;

    // realMilliseconds: a monotonic real clock; the steady clock by default.
    explicit CSharedPlayer(CPlayerModel model, CMilliseconds realMilliseconds = {});

    class CAccess
    {
    public:
        CPlayerModel* operator->() const { return &m_model; }
        CPlayerModel& operator*() const { return m_model; }

    private:
        friend class CSharedPlayer;
        CAccess(std::mutex& mutex, CPlayerModel& model) : m_lock(mutex), m_model(model) {}
        std::unique_lock<std::mutex> m_lock;
        CPlayerModel& m_model;
    };

    // Locks the model until the result goes, with the time brought up to date.
    CAccess Access();

    // Simulated seconds per real second; 0 stops the clock, so that only
    // Jump moves the time.
    void SetSpeed(double speed);
    double Speed();
    // Moves the simulated time at once, whatever the speed.
    void Jump(double seconds);

private:
    void CatchUp(); // under the lock

    std::mutex m_mutex;
    CPlayerModel m_model;
    CMilliseconds m_realMilliseconds;
    std::uint64_t m_lastReal;
    double m_speed = 1;
};

} // namespace cvas::player
