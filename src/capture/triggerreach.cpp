#include "triggerreach.h"

#include "portreach.h"

#include <QMap>

#include <algorithm>

namespace KEO {

namespace {

/// What the counter waits for can't come.
bool isStuck(const UnitProgram &unit)
{
    return unit.count.value_or(1) > 1 && unit.counting == Counting::Continuous && !canRepeat(unit);
}

UnitRange rangeIn(const std::vector<quint32> &matches, size_t position)
{
    const auto has = [&](quint32 state) {
        return std::ranges::any_of(matches,
                                   [=](quint32 set) { return ((set >> position) & 1) == state; });
    };
    if (!has(1))
        return UnitRange::Never;
    return has(0) ? UnitRange::Either : UnitRange::Always;
}

/// Sets of units that report, by number.
using Reports = std::vector<bool>;

/// Makes sets in which the unit of bit \a bit matches sets in which it reports, wherever its
/// counter may stand: one with a counter may lack matches, or have had enough of them before.
void countMatches(Reports &reports, quint32 bit, const UnitProgram &unit, UnitRange range)
{
    const bool isNever = range == UnitRange::Never;
    const bool mayLack = unit.count && *unit.count > 1;
    const bool mayStay = unit.count && unit.counting == Counting::Total && !isNever;
    for (quint32 with = bit; with < reports.size(); with = (with + 1) | bit) {
        const quint32 without = with & ~bit;
        const bool matched = reports[with];
        const bool unmatched = reports[without];
        reports[with] = !isNever && (matched || (unmatched && mayStay));
        reports[without] = unmatched || (matched && (mayLack || isNever));
    }
}

/// What the units of a port, in \a slots, can report together, as input numbers.
std::vector<quint32> inputsOf(const Reports &reports, const QList<int> &slots)
{
    std::vector<quint32> inputs;
    for (size_t set = 0; set < reports.size(); ++set) {
        if (!reports[set])
            continue;
        quint32 input = 0;
        for (qsizetype k = 0; k < slots.size(); ++k)
            input |= quint32((set >> k) & 1) << slots[k];
        inputs.push_back(input);
    }
    return inputs;
}

std::vector<quint32> anyWithAny(const std::vector<quint32> &a, const std::vector<quint32> &b)
{
    std::vector<quint32> all;
    all.reserve(a.size() * b.size());
    for (const quint32 first : a) {
        for (const quint32 second : b)
            all.push_back(first | second);
    }
    return all;
}

} // namespace

bool canRepeat(const UnitProgram &unit)
{
    if (unit.function != MatchFunction::Equal)
        return true;
    for (qsizetype bit = 0; bit < unit.width; ++bit) {
        if (unit.words.edgeWord.testBit(bit) && !unit.words.maskWord.testBit(bit))
            return false;
    }
    return true;
}

TriggerReach::TriggerReach(const QList<UnitProgram> &units)
    : m_ranges(size_t(units.size()), UnitRange::Either),
      m_inputs(TruthTable::constant(int(units.size()), false))
{
    QMap<int, QList<int>> slotsOfPort;
    for (int slot = 0; slot < units.size(); ++slot)
        slotsOfPort[units[slot].port].append(slot);
    std::vector<quint32> inputs{0};
    for (const QList<int> &slots : std::as_const(slotsOfPort)) {
        std::vector<UnitProgram> ofPort;
        for (const int slot : slots)
            ofPort.push_back(units[slot]);
        const std::vector<quint32> matches = matchSets(ofPort);
        Reports reports(size_t(1) << slots.size());
        for (const quint32 set : matches)
            reports[set] = true;
        for (size_t k = 0; k < ofPort.size(); ++k) {
            UnitRange &range = m_ranges[size_t(slots[qsizetype(k)])];
            range = isStuck(ofPort[k]) ? UnitRange::Never : rangeIn(matches, k);
            countMatches(reports, quint32(1) << k, ofPort[k], range);
        }
        inputs = anyWithAny(inputs, inputsOf(reports, slots));
    }
    for (const quint32 input : inputs)
        m_inputs.words[input / 64] |= quint64(1) << (input % 64);
}

} // namespace KEO
