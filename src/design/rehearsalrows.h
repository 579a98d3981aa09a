#pragma once

#include "rehearsal.h"

#include <wave_data/aidrow.h>

namespace KEO {

/// A rehearsal as rows beside those of its window: the trigger, whose samples are the hits, the
/// expressions in force, and what the match units in use report. \a core has the set-up that was
/// rehearsed; \a ports tells what of it can't be known, and the remark says so.
[[nodiscard]] WaveMonitor::AidRows rehearsalRows(const CoreConfig &core, const PortSamples &ports,
                                                 const Rehearsal &rehearsal);

} // namespace KEO
