#pragma once

#include "conditiontrack.h"
#include "portsamples.h"
#include "triggerprogram.h"

#include <optional>
#include <vector>

namespace KEO {

/// When the core began to look for its trigger: at a sample of the window, or, for nothing, at an
/// unknown time, at the latest with the window's first sample.
using ArmedAt = std::optional<qsizetype>;

/// The comparison alone, before the counter. A port bit that was not captured may be anything at
/// each sample, and so may the sample before the first; the comparison is known wherever what is
/// known decides it, in every case.
[[nodiscard]] ConditionTrack unitMatches(const UnitProgram &unit, const PortSamples &ports);

/// What a core that holds a program makes of the samples of a window, sample by sample, and how far
/// that can be told. Nothing is reported, and nothing triggers, before the core was armed. That the
/// core wants some samples before its trigger is left to whoever asks for the first one.
struct TriggerEvaluation
{
    qsizetype samples = 0;
    std::vector<ConditionTrack> matches;     ///< by slot: comparisons, before the counter
    std::vector<ConditionTrack> reports;     ///< by slot: what the unit reports, counter included
    std::vector<ConditionTrack> expressions; ///< as in TriggerProgram::expressions
    ConditionTrack trigger;                  ///< unknown throughout for tables from before
};

/// A counter may stand anywhere when the core was armed at an unknown time. An expression is known
/// where every state of the units of which nothing is known gives the same answer, and the trigger
/// where all expressions together do.
[[nodiscard]] TriggerEvaluation evaluateTrigger(const TriggerProgram &program,
                                                const PortSamples &ports, ArmedAt armed = {});

} // namespace KEO
