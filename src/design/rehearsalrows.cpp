#include "rehearsalrows.h"

#include <config/coreconfig.h>
#include <trigger/expression.h>
#include <trigger/valuetext.h>

#include <QCoreApplication>
#include <QSet>
#include <QStringList>

#include <algorithm>

namespace KEO {

using WaveMonitor::AidRow;
using WaveMonitor::AidRows;

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::RehearsalRows)
};

AidRow rowOf(const QString &name, const QString &toolTip, const ConditionTrack &track)
{
    return {name, toolTip, track.known, track.holds};
}

AidRow unitRow(const CoreConfig &core, const UnitProgram &unit, const ConditionTrack &reports)
{
    const MatchUnit &set = *core.matchUnitByIndex(unit.unit);
    const QString condition =
        QStringLiteral("M%1 %2 %3")
            .arg(QString::number(unit.unit), matchFunctionText(unit.function), valueText(set));
    const QString port = Text::tr("Compares Trigger %1.").arg(unit.port);
    if (!unit.count)
        return rowOf(condition, port, reports);
    const QString count = QString::number(*unit.count);
    const QString counter =
        unit.counting == Counting::Continuous
            ? Text::tr("Reports when it has matched in %1 samples in a row.").arg(count)
            : Text::tr("Reports from match %1 on.").arg(count);
    return rowOf(Text::tr("%1, %2 times").arg(condition, count), port + u' ' + counter, reports);
}

bool isCaptured(const UnitProgram &unit, const PortSamples &ports)
{
    for (int bit = 0; bit < unit.width; ++bit) {
        if (ports.bit(unit.port, bit))
            return true;
    }
    return false;
}

QString remarkOf(const TriggerProgram &program, const PortSamples &ports)
{
    QStringList remarks;
    QSet<int> missing;
    for (const UnitProgram &unit : program.units) {
        if (!isCaptured(unit, ports))
            missing.insert(unit.port);
    }
    QList<int> numbers(missing.cbegin(), missing.cend());
    std::ranges::sort(numbers);
    QStringList names;
    for (const int number : numbers)
        names.append(Text::tr("Trigger %1").arg(number));
    const bool isNothing =
        !program.units.isEmpty() && std::ranges::none_of(program.units, [&](const auto &unit) {
            return isCaptured(unit, ports);
        });
    if (isNothing)
        remarks.append(Text::tr("No signal that the match units compare was captured."));
    else if (!names.isEmpty())
        remarks.append(Text::tr("Not captured: %1.").arg(names.join(QStringLiteral(", "))));
    if (program.tables == TriggerProgram::Tables::AnyInput)
        remarks.append(Text::tr("No expression is checked, so any sample triggers."));
    else if (program.tables == TriggerProgram::Tables::Kept)
        remarks.append(Text::tr("The core goes by the expressions that it holds already."));
    if (program.leftOut > 0)
        remarks.append(
            Text::tr("%n expressions have no place in the core.", nullptr, int(program.leftOut)));
    return remarks.join(u' ');
}

} // namespace

AidRows rehearsalRows(const CoreConfig &core, const PortSamples &ports, const Rehearsal &rehearsal)
{
    const auto &[program, evaluation] = rehearsal;
    AidRows rows;
    rows.title = Text::tr("Rehearsed Trigger");
    rows.remark = remarkOf(program, ports);
    rows.hitRow = 0;
    rows.rows.append(rowOf(Text::tr("Trigger"),
                           Text::tr("Where the core would trigger as it is set now, if it was "
                                    "waiting for its trigger then."),
                           evaluation.trigger));
    for (size_t i = 0; i < program.expressions.size(); ++i) {
        const ExpressionProgram &expression = program.expressions[i];
        rows.rows.append(rowOf(
            QStringLiteral("exp%1: %2")
                .arg(QString::number(expression.row), withUnitNames(expression.text)),
            expression.isEvaluable ? QString()
                                   : Text::tr("The expression can't be read and never fires."),
            evaluation.expressions[i]));
    }
    for (qsizetype slot = 0; slot < program.units.size(); ++slot)
        rows.rows.append(unitRow(core, program.units[slot], evaluation.reports[size_t(slot)]));
    return rows;
}

} // namespace KEO
