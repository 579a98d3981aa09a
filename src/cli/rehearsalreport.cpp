#include "rehearsalreport.h"

#include <QCoreApplication>

#include <utility>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::RehearsalReport)
};

constexpr QLatin1String kIndent("  ");

/// "+3", "-3" or "0", from the trigger on.
QString signedNumber(qsizetype number)
{
    return (number > 0 ? QStringLiteral("+") : QString()) + QString::number(number);
}

/// ", unknown: 3", or nothing if all is known.
QString unknownText(qsizetype unknown)
{
    return unknown > 0 ? Text::tr(", unknown: %1").arg(unknown) : QString();
}

} // namespace

RehearsalReport::RehearsalReport(int core, int window, int triggerSample, Rehearsal rehearsal,
                                 QList<DiagnosisLine> why)
    : m_core(core),
      m_window(window),
      m_triggerSample(triggerSample),
      m_rehearsal(std::move(rehearsal))
{
    if (!hasHit())
        m_why = std::move(why);
}

bool RehearsalReport::hasHit() const
{
    return setSamples(m_rehearsal.evaluation.trigger.holds) > 0;
}

std::vector<quint64> RehearsalReport::unknownIn(const ConditionTrack &track) const
{
    std::vector<quint64> unknown = track.known;
    for (size_t word = 0; word < unknown.size(); ++word)
        unknown[word] = ~unknown[word] & windowBits(m_rehearsal.evaluation.samples, word);
    return unknown;
}

/// "16 (trigger 0)" or "40..43 (trigger +24..+27)".
QString RehearsalReport::runText(const SampleRun &run) const
{
    const auto from = [&](qsizetype sample) { return signedNumber(sample - m_triggerSample); };
    if (run.first == run.last)
        return Text::tr("%1 (trigger %2)").arg(QString::number(run.first), from(run.first));
    return Text::tr("%1..%2 (trigger %3..%4)")
        .arg(QString::number(run.first), QString::number(run.last), from(run.first),
             from(run.last));
}

QStringList RehearsalReport::lines() const
{
    const auto &[program, evaluation] = m_rehearsal;
    const std::vector<quint64> unknown = unknownIn(evaluation.trigger);
    QStringList lines{Text::tr("core %1 window %2: hits: %3 of %4 samples")
                          .arg(QString::number(m_core), QString::number(m_window),
                               QString::number(setSamples(evaluation.trigger.holds)),
                               QString::number(evaluation.samples)) +
                      unknownText(setSamples(unknown))};
    for (const SampleRun &run : setRuns(evaluation.trigger.holds))
        lines.append(kIndent + Text::tr("hit: %1").arg(runText(run)));
    for (const SampleRun &run : setRuns(unknown))
        lines.append(kIndent + Text::tr("unknown: %1").arg(runText(run)));
    for (qsizetype slot = 0; slot < program.units.size(); ++slot) {
        const UnitProgram &unit = program.units[slot];
        const ConditionTrack &reports = evaluation.reports[size_t(slot)];
        QString line =
            Text::tr("M%1: matches: %2")
                .arg(QString::number(unit.unit),
                     QString::number(setSamples(evaluation.matches[size_t(slot)].holds)));
        if (unit.count)
            line += Text::tr(", reports: %1").arg(setSamples(reports.holds));
        lines.append(kIndent + line + unknownText(setSamples(unknownIn(reports))));
    }
    if (program.tables == TriggerProgram::Tables::AnyInput)
        lines.append(kIndent + Text::tr("no expression is in force: any sample triggers"));
    for (size_t e = 0; e < program.expressions.size(); ++e) {
        const ConditionTrack &track = evaluation.expressions[e];
        lines.append(
            kIndent +
            Text::tr("%1: hits: %2")
                .arg(program.expressions[e].text, QString::number(setSamples(track.holds))) +
            unknownText(setSamples(unknownIn(track))));
    }
    for (const DiagnosisLine &line : m_why)
        lines.append(kIndent + Text::tr("why: %1").arg(line.text));
    return lines;
}

QJsonArray RehearsalReport::jsonOf(const std::vector<SampleRun> &runs) const
{
    QJsonArray array;
    for (const SampleRun &run : runs)
        array.append(QJsonObject{{"first", run.first},
                                 {"last", run.last},
                                 {"from_trigger", run.first - m_triggerSample}});
    return array;
}

QJsonObject RehearsalReport::json() const
{
    const auto &[program, evaluation] = m_rehearsal;
    const std::vector<quint64> unknown = unknownIn(evaluation.trigger);
    QJsonArray units;
    for (qsizetype slot = 0; slot < program.units.size(); ++slot) {
        const ConditionTrack &reports = evaluation.reports[size_t(slot)];
        units.append(QJsonObject{{"unit", program.units[slot].unit},
                                 {"matches", setSamples(evaluation.matches[size_t(slot)].holds)},
                                 {"reports", setSamples(reports.holds)},
                                 {"unknown", setSamples(unknownIn(reports))}});
    }
    QJsonArray expressions;
    for (size_t e = 0; e < program.expressions.size(); ++e) {
        const ConditionTrack &track = evaluation.expressions[e];
        expressions.append(QJsonObject{{"expression", program.expressions[e].text},
                                       {"hits", setSamples(track.holds)},
                                       {"unknown", setSamples(unknownIn(track))}});
    }
    QJsonArray why;
    for (const DiagnosisLine &line : m_why) {
        QJsonObject told{{"text", line.text}};
        if (line.sample)
            told.insert("sample", *line.sample);
        why.append(told);
    }
    QJsonObject object{{"core", m_core},
                       {"window", m_window},
                       {"trigger_position", m_triggerSample},
                       {"samples", evaluation.samples},
                       {"hits", setSamples(evaluation.trigger.holds)},
                       {"unknown", setSamples(unknown)},
                       {"hit_runs", jsonOf(setRuns(evaluation.trigger.holds))},
                       {"unknown_runs", jsonOf(setRuns(unknown))},
                       {"any_input", program.tables == TriggerProgram::Tables::AnyInput},
                       {"units", units},
                       {"expressions", expressions}};
    if (!why.isEmpty())
        object.insert("why", why);
    return object;
}

} // namespace KEO
