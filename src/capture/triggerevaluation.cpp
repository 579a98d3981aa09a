#include "triggerevaluation.h"

#include "matchcounter.h"
#include "tabletracks.h"

#include <algorithm>
#include <array>
#include <functional>
#include <utility>

namespace KEO {

namespace {

/// The answer of a program with tables, all expressions together.
template <typename TableOf>
TruthTable triggerTable(const TriggerProgram &program, TableOf tableOf)
{
    TruthTable table = TruthTable::constant(int(program.units.size()), false);
    for (const ExpressionProgram &expression : program.expressions) {
        const TruthTable &own = tableOf(expression);
        for (size_t word = 0; word < table.words.size(); ++word)
            table.words[word] |= own.words[word];
    }
    return table;
}

/// The core was not armed before \a sample.
void silenceBefore(ConditionTrack &track, qsizetype sample, qsizetype samples)
{
    for (size_t word = 0; word < track.known.size(); ++word) {
        const quint64 before = windowBits(std::min(sample, samples), word);
        track.known[word] |= before;
        track.holds[word] &= ~before;
    }
}

/// Leaves unknown where a condition does not hold for sure, but is possible.
void admit(ConditionTrack &track, const ConditionTrack &possible)
{
    for (size_t word = 0; word < track.known.size(); ++word)
        track.known[word] = track.holds[word] | (possible.known[word] & ~possible.holds[word]);
}

void evaluateTables(TriggerEvaluation &evaluation, const TriggerProgram &program)
{
    const TruthTable fires = triggerTable(program, std::mem_fn(&ExpressionProgram::table));
    std::vector<const TruthTable *> tables;
    for (const ExpressionProgram &expression : program.expressions)
        tables.push_back(&expression.table);
    tables.push_back(&fires);
    evaluation.expressions = tableTracks(tables, evaluation.reports, evaluation.samples);
    evaluation.trigger = std::move(evaluation.expressions.back());
    evaluation.expressions.pop_back();
    if (program.leftOut > 0) // they may fire as well
        evaluation.trigger.known = evaluation.trigger.holds;
}

/// Goes over what evaluateTables() gave, for expressions that look at units without a slot.
void admitPossible(TriggerEvaluation &evaluation, const TriggerProgram &program)
{
    const auto trackOf = [&](const TruthTable &table) {
        return tableTracks(std::array{&table}, evaluation.reports, evaluation.samples).front();
    };
    bool isAny = false;
    for (size_t i = 0; i < program.expressions.size(); ++i) {
        if (!program.expressions[i].possibleTable)
            continue;
        admit(evaluation.expressions[i], trackOf(*program.expressions[i].possibleTable));
        isAny = true;
    }
    if (isAny)
        admit(evaluation.trigger,
              trackOf(triggerTable(program, std::mem_fn(&ExpressionProgram::possible))));
}

} // namespace

TriggerEvaluation evaluateTrigger(const TriggerProgram &program, const PortSamples &ports,
                                  ArmedAt armed)
{
    TriggerEvaluation evaluation;
    evaluation.samples = ports.samples();
    for (const UnitProgram &unit : program.units) {
        evaluation.matches.push_back(unitMatches(unit, ports));
        evaluation.reports.push_back(
            countMatches(unit, evaluation.matches.back(), evaluation.samples, armed));
    }
    switch (program.tables) {
    case TriggerProgram::Tables::Fixed:
    case TriggerProgram::Tables::Written:
        evaluateTables(evaluation, program);
        admitPossible(evaluation, program);
        break;
    case TriggerProgram::Tables::AnyInput:
        evaluation.trigger = ConditionTrack::constant(evaluation.samples, true);
        break;
    case TriggerProgram::Tables::Kept:
        evaluation.trigger = ConditionTrack::unknown(evaluation.samples);
        break;
    }
    if (armed) {
        for (auto *tracks : {&evaluation.reports, &evaluation.expressions}) {
            for (ConditionTrack &track : *tracks)
                silenceBefore(track, *armed, evaluation.samples);
        }
        silenceBefore(evaluation.trigger, *armed, evaluation.samples);
    }
    return evaluation;
}

} // namespace KEO
