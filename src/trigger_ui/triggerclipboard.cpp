#include "triggerclipboard.h"

#include <config/coreconfig.h>
#include <trigger/expression.h>
#include <trigger/valuetext.h>

#include <QClipboard>
#include <QCoreApplication>
#include <QGuiApplication>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::TriggerClipboard)
};

/// The values in a text for so many units. Empty lines stand for units without a value if they are
/// what makes a line for each.
QStringList valueLines(QString text, qsizetype units)
{
    if (text.endsWith(u'\n'))
        text.chop(1);
    const QStringList all = text.split(u'\n');
    QStringList values;
    for (const QString &line : all) {
        if (!line.trimmed().isEmpty())
            values.append(line);
    }
    return all.size() == units && !values.isEmpty() ? all : values;
}

} // namespace

void copyValues(const QList<MatchUnit *> &units)
{
    QStringList lines;
    for (const MatchUnit *unit : units)
        lines.append(valueText(*unit));
    if (lines.isEmpty())
        return;
    if (lines.last().isEmpty())
        lines.append(QString()); // a last line that is empty shows by its end alone
    QGuiApplication::clipboard()->setText(lines.join(u'\n'));
}

std::optional<TriggerFinding> pasteValues(const QList<MatchUnit *> &units)
{
    const QStringList lines = valueLines(QGuiApplication::clipboard()->text(), units.size());
    const auto refusal = [](const MatchUnit &unit, const QString &reason) {
        return TriggerFinding{TriggerFinding::Subject::Unit, unit.index,
                              TriggerFinding::Weight::Obstacle,
                              Text::tr("Not pasted: %1").arg(reason)};
    };
    if (units.isEmpty())
        return {};
    if (lines.isEmpty() || (lines.size() != 1 && lines.size() != units.size()))
        return refusal(*units.first(),
                       Text::tr("The clipboard holds %1 values for %2 rows.")
                           .arg(QString::number(lines.size()), QString::number(units.size())));
    QList<UnitValues> values;
    for (int i = 0; i < units.size(); ++i) {
        Result<UnitValues> value = valuesFor(*units[i], lines.size() == 1 ? lines[0] : lines[i]);
        if (!value)
            return refusal(*units[i], value.error().message);
        values.append(*std::move(value));
    }
    for (int i = 0; i < units.size(); ++i) {
        units[i]->value0 = values[i].value0;
        units[i]->value1 = values[i].value1;
    }
    return {};
}

void copyExpression(const QString &expression)
{
    QGuiApplication::clipboard()->setText(withUnitNames(expression));
}

Result<QString> pastedExpression(const CoreConfig &core)
{
    const auto refusal = [](const QString &reason) {
        return Error{Error::Usage, Text::tr("Not pasted: %1").arg(reason)};
    };
    if (core.dynamic == 0)
        return refusal(Text::tr("The expressions of this core are built into the design."));
    const QString text = QGuiApplication::clipboard()->text();
    if (text.size() > ExpressionInput::kMaxPasted)
        return refusal(Text::tr("%1 characters are too many for an expression.").arg(text.size()));
    ExpressionInput input;
    input.type(withUnitNames(text));
    const QString fault = expressionFault(input.tokens(), unitFlags(core));
    if (!fault.isEmpty())
        return refusal(fault);
    return input.tokens().join(QString());
}

QList<bool> unitFlags(const CoreConfig &core)
{
    QList<bool> flags;
    for (const auto &unit : core.matchUnits)
        flags.append(unit->enabled);
    return flags;
}

} // namespace KEO
