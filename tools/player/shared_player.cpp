#include "tools/player/shared_player.h"

#include <chrono>

namespace cvas::player
{

namespace
{

std::uint64_t SteadyMilliseconds()
{
    using namespace std::chrono;
    return static_cast<std::uint64_t>(
        duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

} // namespace

CSharedPlayer::CSharedPlayer(CPlayerModel model, CMilliseconds realMilliseconds)
    : m_model(std::move(model)),
      m_realMilliseconds(realMilliseconds ? std::move(realMilliseconds) : SteadyMilliseconds),
      m_lastReal(m_realMilliseconds())
{
}

CSharedPlayer::CAccess CSharedPlayer::Access()
{
    CAccess access(m_mutex, m_model);
    CatchUp();
    return access;
}

void CSharedPlayer::SetSpeed(double speed)
{
    CAccess access(m_mutex, m_model);
    CatchUp();
    m_speed = speed;
}

double CSharedPlayer::Speed()
{
    std::lock_guard lock(m_mutex);
    return m_speed;
}

void CSharedPlayer::Jump(double seconds)
{
    CAccess access(m_mutex, m_model);
    CatchUp();
    m_model.Advance(seconds);
}

void CSharedPlayer::CatchUp()
{
    const std::uint64_t now = m_realMilliseconds();
    const std::uint64_t elapsed = now - m_lastReal;
    m_lastReal = now;
    if (m_speed > 0 && elapsed > 0)
        m_model.Advance(static_cast<double>(elapsed) * m_speed / 1000.0);
}

} // namespace cvas::player
