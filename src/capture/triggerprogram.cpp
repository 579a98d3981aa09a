#include "triggerprogram.h"

#include "registermap.h"

#include <base/logging.h>
#include <config/coreconfig.h>

#include <algorithm>
#include <functional>

namespace KEO {

namespace {

constexpr qint64 kMaxImageBytes = qint64(512) * 1024 * 1024;
constexpr qint64 kBytesPerWord = 64; // of a bit array in a list, apart from its bits
constexpr int kCounterMask = 0xffff; // of the value that a counter is loaded with

/// Rows of the expressions that count. A list of flags of another length than the expressions says
/// nothing about them.
QList<int> rowsInForce(const CoreConfig &core)
{
    const bool hasFlags = core.dynamic && core.expressions.size() == core.expressionEnabled.size();
    QList<int> rows;
    for (int row = 0; row < core.expressions.size(); ++row) {
        if (!hasFlags || core.expressionEnabled[row])
            rows.append(row);
    }
    return rows;
}

TriggerProgram::Tables tablesOf(const CoreConfig &core, bool hasExpressions)
{
    if (!core.dynamic)
        return TriggerProgram::Tables::Fixed;
    if (hasExpressions)
        return TriggerProgram::Tables::Written;
    return core.expressions.size() == core.expressionEnabled.size()
               ? TriggerProgram::Tables::AnyInput
               : TriggerProgram::Tables::Kept;
}

/// How many tables have an address and, together, an image of bearable size.
qint64 roomForTables(const CoreConfig &core, quint32 inputs)
{
    const qint64 tableBytes = qint64(inputs) * (kBytesPerWord + core.requiredRegisterWidth() / 8);
    const qint64 addressable = (Registers::kAddressEnd - Registers::kTableBase) / Registers::kBlock;
    return std::min(addressable, kMaxImageBytes / tableBytes);
}

/// The units that \a text names, in ascending order.
QList<int> unitsNamed(QString text)
{
    QList<int> units;
    for (int unit = CoreConfig::kUnits; unit >= 0; --unit) { // M1 must not be found inside M10
        const QString name = QLatin1Char('M') + QString::number(unit);
        if (!text.contains(name))
            continue;
        units.prepend(unit);
        text.remove(name);
    }
    return units;
}

/// The condition without an input of which nothing is known: where it holds for both of its states,
/// or, with \a combine an "or", for one.
template <typename Combine>
TruthTable withoutInput(const TruthTable &table, int input, Combine combine)
{
    TruthTable either = table.withFixed(input, false);
    const TruthTable other = table.withFixed(input, true);
    std::ranges::transform(either.words, other.words, either.words.begin(), combine);
    return either;
}

/// \a named are the units of the expression in the design, which has them whether they are in use
/// or not.
void fillFixedTables(ExpressionProgram &expression, TruthTable table, const QList<int> &named,
                     const TriggerProgram &program)
{
    TruthTable possible = table;
    for (int input = int(named.size()) - 1; input >= 0; --input) {
        if (program.slotOf(named[input]) >= 0)
            continue;
        table = withoutInput(table, input, std::bit_and());
        possible = withoutInput(possible, input, std::bit_or());
    }
    const int slots = int(program.units.size());
    expression.table = table.spreadOver(expression.slots, slots);
    if (possible != table)
        expression.possibleTable = possible.spreadOver(expression.slots, slots);
}

ExpressionProgram programExpression(int row, const QString &text, const TriggerProgram &program)
{
    const std::optional<TruthTable> table = evaluateExpression(text);
    const QList<int> named = unitsNamed(text);
    ExpressionProgram expression;
    expression.row = row;
    expression.text = text;
    expression.isEvaluable = table.has_value();
    for (const int unit : named) {
        if (const int slot = program.slotOf(unit); slot >= 0)
            expression.slots |= quint32(1) << slot;
    }
    const int slots = int(program.units.size());
    if (!table)
        expression.table = TruthTable::constant(slots, false);
    else if (program.tables == TriggerProgram::Tables::Fixed && table->inputs == named.size())
        fillFixedTables(expression, *table, named, program);
    else
        expression.table = table->spreadOver(expression.slots, slots);
    return expression;
}

UnitProgram programUnit(const MatchUnit &unit)
{
    UnitProgram program;
    program.unit = unit.index;
    program.port = unit.trigger->index;
    program.width = int(signalBits(unit.trigger->signals));
    program.function = isKnown(unit.func) ? unit.func : MatchFunction::Equal;
    program.words = encodeMatchUnitValue(unit);
    if (unit.counter_enable) {
        program.count = int((qint64(unit.counter) - 1) & kCounterMask) + 1;
        program.counting = unit.countinuous ? Counting::Continuous : Counting::Total;
    }
    return program;
}

} // namespace

int TriggerProgram::slotOf(int unit) const
{
    const auto found = std::ranges::find(units, unit, &UnitProgram::unit);
    return found == units.end() ? -1 : int(found - units.begin());
}

std::optional<bool> TriggerProgram::firesAt(quint32 input) const
{
    if (tables == Tables::Kept)
        return std::nullopt;
    const auto isIn = [&](const auto &tableOf) {
        return std::ranges::any_of(expressions, [&](const ExpressionProgram &expression) {
            return tableOf(expression).at(input);
        });
    };
    if (tables == Tables::AnyInput || isIn(std::mem_fn(&ExpressionProgram::table)))
        return true;
    if (isIn(std::mem_fn(&ExpressionProgram::possible)))
        return std::nullopt;
    return false;
}

QList<UnitProgram> programUnits(const CoreConfig &core)
{
    QList<UnitProgram> units;
    for (const auto &unit : core.matchUnits) {
        if (unit->isInUse())
            units.append(programUnit(*unit));
    }
    return units;
}

TriggerProgram triggerProgram(const CoreConfig &core)
{
    TriggerProgram program;
    program.units = programUnits(core);
    const QList<int> rows = rowsInForce(core);
    program.tables = tablesOf(core, !rows.isEmpty());
    const qsizetype written = std::min(rows.size(), roomForTables(core, program.inputCount()));
    program.leftOut = rows.size() - written;
    if (program.leftOut > 0)
        qCDebug(lcCapture, "core %d: %lld of %lld expressions left out", core.index,
                qlonglong(program.leftOut), qlonglong(rows.size()));
    for (const int row : rows.first(written))
        program.expressions.push_back(programExpression(row, core.expressions[row], program));
    return program;
}

} // namespace KEO
