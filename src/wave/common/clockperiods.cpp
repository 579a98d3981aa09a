#include "clockperiods.h"

namespace WaveMonitor {

std::optional<ClockPeriod> ClockPeriods::ofCore(int core) const
{
    const auto found = m_periods.constFind(core);
    return found == m_periods.cend() ? std::nullopt : std::optional(*found);
}

void ClockPeriods::set(int core, const std::optional<ClockPeriod> &period)
{
    if (ofCore(core) == period)
        return;
    if (period)
        m_periods.insert(core, *period);
    else
        m_periods.remove(core);
    Q_EMIT changed();
}

void ClockPeriods::setAll(const QMap<int, ClockPeriod> &periods)
{
    if (m_periods == periods)
        return;
    m_periods = periods;
    Q_EMIT changed();
}

} // namespace WaveMonitor
