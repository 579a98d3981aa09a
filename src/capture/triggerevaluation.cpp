#include "triggerevaluation.h"

#include "matchcounter.h"
#include "tabletracks.h"

#include <algorithm>
#include <utility>

namespace KEO {

namespace {

/// The answer of a program with tables, all expressions together.
TruthTable triggerTable(const TriggerProgram &program)
{
    TruthTable table = TruthTable::constant(int(program.units.size()), false);
    for (const ExpressionProgram &expression : program.expressions) {
        for (size_t word = 0; word < table.words.size(); ++word)
            table.words[word] |= expression.table.words[word];
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

void evaluateTables(TriggerEvaluation &evaluation, const TriggerProgram &program)
{
    const TruthTable fires = triggerTable(program);
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
