#pragma once

#include "conditiontrack.h"

#include <trigger/truthtable.h>

#include <span>
#include <vector>

namespace KEO {

/// What truth tables answer at each sample, table by table. Input k of all of them is
/// \a inputs[k]; no more than TruthTable::kMaxInputs. An answer is known where every state of the
/// unknown inputs gives the same.
[[nodiscard]] std::vector<ConditionTrack> tableTracks(std::span<const TruthTable *const> tables,
                                                      const std::vector<ConditionTrack> &inputs,
                                                      qsizetype samples);

} // namespace KEO
