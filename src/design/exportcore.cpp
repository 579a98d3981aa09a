#include "exportcore.h"

#include <config/coreconfig.h>
#include <config/litecoreconfig.h>

namespace KEO {

ExportCore exportCore(const CoreConfig &core)
{
    return {.index = core.index,
            .moduleName = core.module_name,
            .sampleClock = core.sample_clock,
            .clockInverted = core.trig_type == 1,
            .triggerSample = core.trigger_pos};
}

ExportCore exportCore(const LiteCoreConfig &core)
{
    return {.index = core.index,
            .moduleName = core.module_name,
            .sampleClock = core.sample_clock,
            .clockInverted = core.trig_type == 1,
            .triggerSample = 0};
}

} // namespace KEO
