#include "triggeroptions.h"

#include <config/capturelimits.h>
#include <config/coreconfig.h>
#include <trigger/expression.h>
#include <trigger/unitsetting.h>

#include <QCoreApplication>

#include <algorithm>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::TriggerOptions)
};

const QString kNone = QStringLiteral("none");

Error refusal(const CoreConfig &core, const QString &why)
{
    return {Error::Usage, Text::tr("Core %1: %2").arg(QString::number(core.index), why)};
}

int greatestPosition(int amount)
{
    return std::max(0, amount - kMinRowsFromTrigger);
}

std::optional<Error> applyWindows(int windows, CoreConfig &core)
{
    if (windows < 1 || windows > kMaxOfferedWindows)
        return refusal(core,
                       Text::tr("--windows takes 1 to %1, not %2.")
                           .arg(QString::number(kMaxOfferedWindows), QString::number(windows)));
    const QList<int> offered = offeredAmounts(core.storage_depth, windows);
    if (offered.isEmpty())
        return refusal(core,
                       Text::tr("its memory of %1 samples is too small for --windows %2.")
                           .arg(QString::number(core.storage_depth), QString::number(windows)));
    core.window_num = windows;
    if (!offered.contains(core.capture_amount)) {
        core.capture_amount = offered.last();
        core.trigger_pos = std::min(core.trigger_pos, greatestPosition(core.capture_amount));
    }
    return {};
}

std::optional<Error> applyAmount(int amount, CoreConfig &core)
{
    const QList<int> offered = offeredAmounts(core.storage_depth, core.window_num);
    if (!offered.contains(amount)) {
        QStringList texts;
        for (const int other : offered)
            texts.append(QString::number(other));
        return refusal(
            core, Text::tr("--amount takes %1 with a memory of %2 samples and --windows "
                           "%3, not %4.")
                      .arg(texts.isEmpty() ? Text::tr("nothing") : texts.join(QStringLiteral(", ")),
                           QString::number(core.storage_depth), QString::number(core.window_num),
                           QString::number(amount)));
    }
    core.capture_amount = amount;
    core.trigger_pos = std::min(core.trigger_pos, greatestPosition(amount));
    return {};
}

std::optional<Error> applyPosition(int position, CoreConfig &core)
{
    const int greatest = greatestPosition(core.capture_amount);
    if (position < 0 || position > greatest)
        return refusal(core,
                       Text::tr("--position takes 0 to %1 with %2 samples a window, not %3.")
                           .arg(QString::number(greatest), QString::number(core.capture_amount),
                                QString::number(position)));
    core.trigger_pos = position;
    return {};
}

/// An expression as the core keeps it. One that the core has already is taken as it is, as a user
/// can put it in force without a look at it.
Result<QString> storedExpression(const QString &text, const CoreConfig &core)
{
    if (core.expressions.contains(text))
        return text;
    QList<bool> units;
    for (const auto &unit : core.matchUnits)
        units.append(unit->enabled);
    ExpressionInput input;
    input.type(withUnitNames(text)); // as a description has it, too
    const QString fault = expressionFault(input.tokens(), units);
    if (!fault.isEmpty())
        return refusal(core, Text::tr("\"%1\" is no expression: %2").arg(text, fault));
    return input.tokens().join(QString());
}

/// The place of \a text among those not yet in force, else the first that is kept for no other.
void putInForce(const QStringList &texts, CoreConfig &core)
{
    QList<bool> &flags = core.expressionEnabled;
    flags.fill(false, core.expressions.size());
    QStringList added;
    for (const QString &text : texts) {
        qsizetype row = core.expressions.indexOf(text);
        while (row >= 0 && flags[row])
            row = core.expressions.indexOf(text, row + 1);
        if (row >= 0)
            flags[row] = true;
        else
            added.append(text);
    }
    for (const QString &text : added) {
        const qsizetype row = flags.indexOf(false);
        core.expressions[row] = text;
        flags[row] = true;
    }
}

std::optional<Error> applyExpressions(const QStringList &texts, CoreConfig &core)
{
    if (core.dynamic == 0)
        return refusal(core, Text::tr("its expressions are built into the design, so it takes no "
                                      "--expression."));
    if (texts == QStringList{kNone}) {
        core.expressionEnabled.fill(false, core.expressions.size());
        return {};
    }
    if (texts.contains(kNone))
        return refusal(core, Text::tr("--expression none puts no expression in force, so it stands "
                                      "alone."));
    if (texts.size() > core.expressions.size())
        return refusal(core, Text::tr("it has room for %1 expressions, and %2 are given.")
                                 .arg(QString::number(core.expressions.size()),
                                      QString::number(texts.size())));
    QStringList stored;
    for (const QString &text : texts) {
        const Result<QString> expression = storedExpression(text, core);
        if (!expression)
            return expression.error();
        stored.append(*expression);
    }
    putInForce(stored, core);
    return {};
}

void writeNumbers(const CoreConfig &core, WrittenOptions &written)
{
    const bool isSettable =
        core.window_num >= 1 && core.window_num <= kMaxOfferedWindows &&
        offeredAmounts(core.storage_depth, core.window_num).contains(core.capture_amount) &&
        core.trigger_pos >= 0 && core.trigger_pos <= greatestPosition(core.capture_amount);
    if (!isSettable) {
        written.remarks.append(
            Text::tr("Windows, amount and position of core %1 are left to the description.")
                .arg(core.index));
        return;
    }
    written.options.windows = core.window_num;
    written.options.amount = core.capture_amount;
    written.options.position = core.trigger_pos;
}

void writeExpressions(const CoreConfig &core, WrittenOptions &written)
{
    if (core.dynamic == 0)
        return;
    for (qsizetype row = 0; row < core.expressions.size(); ++row) {
        if (core.expressionEnabled.value(row, true))
            written.options.expressions.append(core.expressions[row]);
    }
    if (written.options.expressions.isEmpty())
        written.options.expressions.append(kNone);
}

} // namespace

std::optional<Error> applyTriggerOptions(const TriggerOptions &options, CoreConfig &core)
{
    for (const QString &text : options.units) {
        if (const auto error = applyUnitSetting(text, core))
            return error;
    }
    // In this order, whichever came first: each limits the next.
    std::optional<Error> error;
    if (options.windows)
        error = applyWindows(*options.windows, core);
    if (!error && options.amount)
        error = applyAmount(*options.amount, core);
    if (!error && options.position)
        error = applyPosition(*options.position, core);
    if (!error && !options.expressions.isEmpty())
        error = applyExpressions(options.expressions, core);
    return error;
}

WrittenOptions triggerOptionsOf(const CoreConfig &core)
{
    WrittenOptions written;
    written.options.core = core.index;
    writeNumbers(core, written);
    for (const MatchUnit *unit : core.enabledUnits()) {
        if (!unit->isInUse())
            continue; // its settings reach no core
        if (const auto text = unitSettingText(*unit))
            written.options.units.append(*text);
        else
            written.remarks.append(
                Text::tr("M%1 of core %2 is left to the description.")
                    .arg(QString::number(unit->index), QString::number(core.index)));
    }
    writeExpressions(core, written);
    return written;
}

} // namespace KEO
