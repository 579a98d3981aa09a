#pragma once

#include "coresetup.h"

#include <base/carriedsetting.h>
#include <wave_data/clockperiod.h>

#include <QHash>
#include <QMap>

namespace KEO {

struct ClockCarry
{
    QMap<int, WaveMonitor::ClockPeriod> periods; ///< by core
    CarriedSettings account;
};

/// \a periods, which the user has told of the sample clocks of \a before, for the cores of \a now;
/// \a cores leads from the old numbers to the new ones. One goes along if the core still samples
/// with the clock of that name. The period of core -1, which stands for none, stays.
[[nodiscard]] ClockCarry carryClocks(const QMap<int, WaveMonitor::ClockPeriod> &periods,
                                     const CoreSetup &before, const CoreSetup &now,
                                     const QHash<int, int> &cores);

} // namespace KEO
