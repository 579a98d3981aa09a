#pragma once

#include <capture/diagnosistext.h>
#include <capture/triggerevaluation.h>

namespace WaveMonitor {
class WindowContents;
}

namespace KEO {

/// The trigger of a core over a window, without the core.
struct Rehearsal
{
    TriggerProgram program;
    TriggerEvaluation evaluation; ///< of that program
};

/// The ports of \a core as \a contents has them, found by the original names of its signals: a name
/// that a user gave is only shown. What stands in the rows makes no difference. To be kept while
/// the set-up is edited.
[[nodiscard]] PortSamples portSamplesOf(const CoreConfig &core,
                                        const WaveMonitor::WindowContents &contents);

/// The set-up that \a core has now over a window. Its flags of expressions are taken as they are,
/// see CoreConfig::ensureExpressionFlags.
[[nodiscard]] Rehearsal rehearse(const CoreConfig &core, const PortSamples &ports);

/// Why \a rehearsal, which is of \a core over \a ports, has no hit, or where its hits are.
[[nodiscard]] QList<DiagnosisLine> whyNoTrigger(const CoreConfig &core, const PortSamples &ports,
                                                const Rehearsal &rehearsal);

} // namespace KEO
