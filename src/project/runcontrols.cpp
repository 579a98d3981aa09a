#include "runcontrols.h"

#include <config/coreconfig.h>

namespace KEO {

RunControls runControls(const RunSituation &situation)
{
    RunControls controls;
    controls.open = !situation.busy;
    const bool isReady = !situation.busy && !situation.needsProgramming;
    controls.start = isReady && situation.canStart;
    controls.autoRun = isReady && situation.canAuto;
    controls.stop = situation.busy;
    controls.forceTrigger = situation.busy && situation.autorun == -1;
    controls.save = !situation.busy && situation.hasWaves;
    controls.settings = !situation.busy;
    return controls;
}

bool suitsAuto(const QList<CoreConfig *> &selected)
{
    return selected.size() == 1 && selected.first()->window_num == 1;
}

} // namespace KEO
