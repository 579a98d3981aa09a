#pragma once

#include "triggerevaluation.h"

namespace KEO {

/// What the counter of a unit with these comparisons reports; the comparisons themselves for a unit
/// without one.
[[nodiscard]] ConditionTrack countMatches(const UnitProgram &unit, const ConditionTrack &matches,
                                          qsizetype samples, ArmedAt armed);

} // namespace KEO
