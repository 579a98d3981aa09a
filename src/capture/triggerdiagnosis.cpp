#include "triggerdiagnosis.h"

#include <algorithm>
#include <array>
#include <bit>
#include <unordered_map>

namespace KEO {

namespace {

using Words = std::vector<quint64>;

/// Samples in the longest run of set bits.
qsizetype longestRun(const Words &words)
{
    qsizetype longest = 0;
    for (const SampleRun &run : setRuns(words))
        longest = std::max(longest, run.last - run.first + 1);
    return longest;
}

int countedBy(const UnitProgram &unit, const ConditionTrack &matches)
{
    if (!unit.count)
        return 0;
    const qsizetype counted =
        unit.counting == Counting::Total ? setSamples(matches.holds) : longestRun(matches.holds);
    return int(std::min<qsizetype>(counted, *unit.count));
}

UnitDiagnosis diagnoseUnit(const UnitProgram &unit, const PortSamples &ports,
                           const ConditionTrack &matches, const ConditionTrack &reports)
{
    UnitDiagnosis diagnosis;
    const qsizetype known = setSamples(reports.known);
    diagnosis.matches = setSamples(matches.holds);
    diagnosis.hits = setSamples(reports.holds);
    diagnosis.misses = known - diagnosis.hits;
    diagnosis.unknown = ports.samples() - known;
    diagnosis.firstHit = nextSet(reports.holds, 0);
    diagnosis.longestRun = longestRun(reports.holds);
    diagnosis.counted = countedBy(unit, matches);
    diagnosis.nearest = nearestMiss(unit, ports, matches);
    return diagnosis;
}

/// What the units report at a sample: bits by slot. Of a unit that is not known, `input` has 0.
struct UnitStates
{
    quint32 input = 0;
    quint32 unknown = 0;
};

/// States that come up in a window, each once.
struct SeenStates
{
    UnitStates states;
    qsizetype first = 0; ///< sample
    qsizetype samples = 0;
};

/// In the order in which they come up.
std::vector<SeenStates> statesOf(const TriggerEvaluation &evaluation)
{
    const std::vector<ConditionTrack> &reports = evaluation.reports;
    std::vector<SeenStates> seen;
    std::unordered_map<quint32, size_t> places; // in `seen`
    const auto see = [&](UnitStates states, qsizetype sample, qsizetype samples) {
        const auto [place, isNew] =
            places.try_emplace(states.unknown << 16 | states.input, seen.size());
        if (isNew)
            seen.push_back({states, sample, 0});
        seen[place->second].samples += samples;
    };
    for (qsizetype first = 0; first < evaluation.samples; first += 64) {
        const size_t word = size_t(first / 64);
        const qsizetype samples = std::min<qsizetype>(64, evaluation.samples - first);
        const quint64 all = windowBits(evaluation.samples, word);
        std::array<UnitStates, 64> at{};
        UnitStates steady; // units that are the same at all samples of the word
        bool isSteady = true;
        for (size_t slot = 0; slot < reports.size(); ++slot) {
            const quint64 holds = reports[slot].holds[word];
            const quint64 unknown = all & ~reports[slot].known[word];
            const quint32 bit = quint32(1) << slot;
            if ((holds == 0 || holds == all) && (unknown == 0 || unknown == all)) {
                steady.input |= holds != 0 ? bit : 0;
                steady.unknown |= unknown != 0 ? bit : 0;
                continue;
            }
            isSteady = false;
            for (size_t k = 0; k < size_t(samples); ++k) {
                at[k].input |= quint32((holds >> k) & 1) << slot;
                at[k].unknown |= quint32((unknown >> k) & 1) << slot;
            }
        }
        if (isSteady) {
            see(steady, first, samples);
            continue;
        }
        for (qsizetype k = 0; k < samples; ++k)
            see({at[size_t(k)].input | steady.input, at[size_t(k)].unknown | steady.unknown},
                first + k, 1);
    }
    return seen;
}

/// How many units have to differ for an expression to be true, by input number.
class TrueDistance final
{
public:
    static constexpr quint8 kNever = 0xff; ///< no input makes it true

    explicit TrueDistance(const ExpressionProgram &expression)
        : m_expression(expression), m_distance(expression.table.size(), kNever)
    {
        for (quint32 input = 0; input < m_distance.size(); ++input) {
            if (expression.table.at(input))
                m_distance[input] = 0;
        }
        for (quint32 left = expression.slots; left != 0; left &= left - 1) {
            const size_t bit = left & (~left + 1);
            for (size_t block = 0; block < m_distance.size(); block += 2 * bit) {
                for (size_t without = block; without < block + bit; ++without) {
                    quint8 &a = m_distance[without];
                    quint8 &b = m_distance[without | bit];
                    const int nearer = std::min(a, b) + 1;
                    a = quint8(std::min<int>(a, nearer));
                    b = quint8(std::min<int>(b, nearer));
                }
            }
        }
    }

    [[nodiscard]] quint8 at(quint32 input) const { return m_distance[input]; }
    /// The units to change on a shortest way from \a input.
    [[nodiscard]] QList<ExpressionDiagnosis::Nearest::Unit> way(quint32 input) const
    {
        QList<ExpressionDiagnosis::Nearest::Unit> way;
        for (quint32 left = m_expression.slots; left != 0; left &= left - 1) {
            const quint32 bit = left & (~left + 1);
            if (m_distance[input ^ bit] < m_distance[input]) {
                way.append({std::countr_zero(bit), (input & bit) != 0});
                input ^= bit;
            }
        }
        return way;
    }

private:
    const ExpressionProgram &m_expression;
    std::vector<quint8> m_distance;
};

/// Calls \a look with each input number that \a states can be, as far as \a slots makes a
/// difference, until it returns true; gives whether it did.
template <typename Look>
bool anyInput(UnitStates states, quint32 slots, Look look)
{
    const quint32 open = states.unknown & slots;
    quint32 chosen = 0;
    do {
        if (look(states.input | chosen))
            return true;
        chosen = (chosen - open) & open; // the next subset
    } while (chosen != 0);
    return false;
}

enum class Answer { False, True, Unknown };

Answer answerOf(const ExpressionProgram &expression, UnitStates states)
{
    const bool first = expression.table.at(states.input);
    const bool differs = anyInput(states, expression.slots, [&](quint32 input) {
        return expression.table.at(input) != first || expression.possible().at(input) != first;
    });
    return differs ? Answer::Unknown : first ? Answer::True : Answer::False;
}

/// The states of the units in \a slots alone, whatever the others do, in the same order.
std::vector<SeenStates> statesOfSlots(const std::vector<SeenStates> &states, quint32 slots)
{
    std::vector<SeenStates> merged;
    std::unordered_map<quint32, size_t> places; // in `merged`
    for (const SeenStates &seen : states) {
        const UnitStates own{seen.states.input & slots, seen.states.unknown & slots};
        const auto [place, isNew] =
            places.try_emplace(own.unknown << 16 | own.input, merged.size());
        if (isNew)
            merged.push_back({own, seen.first, 0});
        merged[place->second].samples += seen.samples;
    }
    return merged;
}

std::optional<ExpressionDiagnosis::Nearest> nearestOf(const ExpressionProgram &expression,
                                                      const std::vector<SeenStates> &misses)
{
    const TrueDistance distance(expression);
    std::pair best(int(TrueDistance::kNever), qsizetype(0)); // and samples
    ExpressionDiagnosis::Nearest nearest;
    for (const SeenStates &seen : statesOfSlots(misses, expression.slots)) {
        anyInput(seen.states, expression.slots, [&](quint32 input) {
            if (const std::pair found(int(distance.at(input)), seen.samples); found < best) {
                best = found;
                nearest = {seen.first, distance.way(input)};
            }
            return best.first <= 1 && best.second == seen.samples; // of this state, no better one
        });
    }
    if (best.first == TrueDistance::kNever)
        return std::nullopt;
    return nearest;
}

QList<DeadTerm> deadTermsOf(const ExpressionProgram &expression,
                            const std::vector<UnitDiagnosis> &units,
                            const std::vector<SeenStates> &misses)
{
    QList<DeadTerm> dead;
    for (int slot = 0; slot < int(units.size()); ++slot) {
        const UnitDiagnosis &unit = units[size_t(slot)];
        const quint32 bit = quint32(1) << slot;
        const bool isSteady = (unit.hits == 0) != (unit.misses == 0);
        if (!(expression.slots & bit) || !isSteady)
            continue;
        DeadTerm term{slot, unit.hits > 0, 0, 0};
        for (const SeenStates &seen : misses) {
            if (seen.states.unknown & bit)
                continue;
            const UnitStates turned{seen.states.input ^ bit, seen.states.unknown};
            if (answerOf(expression, turned) != Answer::True)
                continue;
            if (term.hits == 0)
                term.firstHit = seen.first;
            term.hits += seen.samples;
        }
        if (term.hits > 0)
            dead.append(term);
    }
    return dead;
}

ExpressionDiagnosis diagnoseExpression(const ExpressionProgram &expression,
                                       const ConditionTrack &track,
                                       const std::vector<UnitDiagnosis> &units,
                                       const std::vector<SeenStates> &states, qsizetype samples)
{
    ExpressionDiagnosis diagnosis;
    diagnosis.hits = setSamples(track.holds);
    diagnosis.unknown = samples - setSamples(track.known);
    diagnosis.firstHit = nextSet(track.holds, 0);
    if (diagnosis.hits > 0 || !expression.isEvaluable)
        return diagnosis;
    std::vector<SeenStates> misses;
    std::ranges::copy_if(states, std::back_inserter(misses), [&](const SeenStates &seen) {
        return answerOf(expression, seen.states) == Answer::False;
    });
    diagnosis.nearest = nearestOf(expression, misses);
    diagnosis.dead = deadTermsOf(expression, units, misses);
    return diagnosis;
}

} // namespace

TriggerDiagnosis diagnoseTrigger(const TriggerProgram &program, const PortSamples &ports,
                                 const TriggerEvaluation &evaluation)
{
    TriggerDiagnosis diagnosis;
    diagnosis.samples = evaluation.samples;
    for (size_t slot = 0; slot < size_t(program.units.size()); ++slot)
        diagnosis.units.push_back(diagnoseUnit(program.units[qsizetype(slot)], ports,
                                               evaluation.matches[slot], evaluation.reports[slot]));
    const std::vector<SeenStates> states = statesOf(evaluation);
    for (size_t i = 0; i < program.expressions.size(); ++i)
        diagnosis.expressions.push_back(
            diagnoseExpression(program.expressions[i], evaluation.expressions[i], diagnosis.units,
                               states, evaluation.samples));
    diagnosis.hits = setSamples(evaluation.trigger.holds);
    diagnosis.unknown = evaluation.samples - setSamples(evaluation.trigger.known);
    diagnosis.firstHit = nextSet(evaluation.trigger.holds, 0);
    return diagnosis;
}

} // namespace KEO
