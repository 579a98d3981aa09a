#include "triggercheck.h"

#include <config/capturelimits.h>
#include <config/coreconfig.h>

namespace KEO {

QList<TriggerFinding> checkTrigger(const CoreConfig &core)
{
    QList<TriggerFinding> findings;
    if (const auto obstacle = captureObstacle(core))
        findings.append({TriggerFinding::Subject::Core, 0, TriggerFinding::Weight::Obstacle,
                         obstacle->message});
    return findings;
}

} // namespace KEO
