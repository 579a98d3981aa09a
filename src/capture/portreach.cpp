#include "portreach.h"

#include <algorithm>

// The port's bits are walked through from the most significant one. What has been seen of the port
// so far puts each unit in one of a few states: a pattern still fits or not, a number is below, at
// or above a bound. All states that the units can be in together are kept, so the work goes with
// the number of such states and the width of the port, not with the number of values.

namespace KEO {

namespace {

/// Two bits for each of the two bounds of a unit.
enum BoundState : quint64 { At = 0, Below = 1, Above = 2 };
enum PatternState : quint64 { Fits = 0, Fails = 1 };
constexpr int kUnitBits = 4;
constexpr int kBoundBits = 2;
constexpr quint64 kBoundMask = 3;

constexpr qint64 kMaxWork = 100'000; // states times units, summed over the bits
constexpr size_t kStatesOfUnit = 9;

/// A bit of the port at a sample and at the one before.
struct Level
{
    bool before;
    bool now;
};

bool fits(const MatchUnitWords &words, qsizetype bit, Level level)
{
    const bool compare = words.compareWord.testBit(bit);
    const bool mask = words.maskWord.testBit(bit);
    if (!words.edgeWord.testBit(bit))
        return !mask || level.now == compare;
    if (mask)
        return (level.now != level.before) != compare;
    return level.before == compare && level.now != compare;
}

quint64 afterBit(quint64 bound, bool boundBit, bool now)
{
    if (bound != At || boundBit == now)
        return bound;
    return now ? Above : Below;
}

quint64 afterBit(quint64 state, const UnitProgram &unit, qsizetype bit, Level level)
{
    const MatchUnitWords &words = unit.words;
    if (isEqualityFunction(unit.function))
        return state == Fails || !fits(words, bit, level) ? Fails : Fits;
    const quint64 lower = afterBit(state & kBoundMask, words.compareWord.testBit(bit), level.now);
    const quint64 upper = afterBit(state >> kBoundBits, words.maskWord.testBit(bit), level.now);
    return lower | upper << kBoundBits;
}

bool matches(quint64 state, MatchFunction function)
{
    const quint64 lower = state & kBoundMask;
    const quint64 upper = state >> kBoundBits;
    switch (function) {
    case MatchFunction::Equal:
        return state == Fits;
    case MatchFunction::NotEqual:
        return state == Fails;
    case MatchFunction::Greater:
        return lower == Above;
    case MatchFunction::Less:
        return upper == Below;
    case MatchFunction::GreaterOrEqual:
        return lower != Below;
    case MatchFunction::LessOrEqual:
        return upper != Above;
    case MatchFunction::InRange:
        return lower != Below && upper != Above;
    case MatchFunction::NotInRange:
        return lower == Below || upper == Above;
    }
    return false;
}

void makeUnique(auto &values)
{
    std::ranges::sort(values);
    values.erase(std::unique(values.begin(), values.end()), values.end());
}

/// States of all units after all bits; empty if there are too many on the way.
std::vector<quint64> finalStates(std::span<const UnitProgram> units)
{
    std::vector<quint64> states{0};
    qint64 work = 0;
    for (qsizetype bit = 0; bit < units.front().width; ++bit) {
        const bool hasEdge = std::ranges::any_of(
            units, [bit](const UnitProgram &unit) { return unit.words.edgeWord.testBit(bit); });
        std::vector<quint64> next;
        for (const quint64 state : states) {
            for (int level = 0; level < (hasEdge ? 4 : 2); ++level) {
                quint64 joined = 0;
                for (size_t k = 0; k < units.size(); ++k) {
                    const quint64 own = (state >> (kUnitBits * k)) & ((1 << kUnitBits) - 1);
                    joined |= afterBit(own, units[k], bit, {(level & 2) != 0, (level & 1) != 0})
                              << (kUnitBits * k);
                }
                next.push_back(joined);
            }
        }
        makeUnique(next);
        states = std::move(next);
        work += qint64(states.size() * units.size());
        if (work > kMaxWork && states.size() > units.size() * kStatesOfUnit)
            return {};
    }
    return states;
}

/// Each unit by itself, and then any with any.
std::vector<quint32> setsOneByOne(std::span<const UnitProgram> units)
{
    std::vector<quint32> sets{0};
    for (size_t k = 0; k < units.size(); ++k) {
        const std::vector<quint32> own = matchSets(units.subspan(k, 1));
        std::vector<quint32> joined;
        for (const quint32 set : sets) {
            for (const quint32 state : own)
                joined.push_back(set | state << k);
        }
        sets = std::move(joined);
    }
    return sets;
}

} // namespace

std::vector<quint32> matchSets(std::span<const UnitProgram> units)
{
    const std::vector<quint64> states = finalStates(units);
    if (states.empty())
        return setsOneByOne(units);
    std::vector<quint32> sets;
    for (const quint64 state : states) {
        quint32 set = 0;
        for (size_t k = 0; k < units.size(); ++k) {
            const quint64 own = (state >> (kUnitBits * k)) & ((1 << kUnitBits) - 1);
            set |= quint32(matches(own, units[k].function)) << k;
        }
        sets.push_back(set);
    }
    makeUnique(sets);
    return sets;
}

} // namespace KEO
