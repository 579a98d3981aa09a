#pragma once

#include "triggerprogram.h"

#include <QList>

#include <vector>

namespace KEO {

/// Whether a unit can match.
enum class UnitRange { Never, Always, Either };

/// What the units of a program can report over all that their ports can do: each unit by itself,
/// and all together as input numbers. Units of one port are looked at together, so `== 5` and
/// `== 6` are known not to match at the same sample; ports are taken to be independent of one
/// another. An input number that is left out can't be; one that is there may still be impossible
/// where counters take part, since how far they have counted is left open.
class TriggerReach final
{
public:
    explicit TriggerReach(const QList<UnitProgram> &units);

    /// A unit whose counter waits for what can't come never matches.
    [[nodiscard]] UnitRange rangeOf(int slot) const { return m_ranges[size_t(slot)]; }
    /// Input numbers that there can be.
    [[nodiscard]] const TruthTable &inputs() const { return m_inputs; }

private:
    std::vector<UnitRange> m_ranges;
    TruthTable m_inputs;
};

/// Whether the unit can match at two samples in a row; a rising or falling edge can't.
[[nodiscard]] bool canRepeat(const UnitProgram &unit);

} // namespace KEO
