#include "triggerprogram.h"

#include "registermap.h"

#include <base/logging.h>
#include <config/coreconfig.h>

#include <algorithm>

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

/// The slots of the units that \a text names. A unit without a slot has none.
quint32 slotsNamed(QString text, const TriggerProgram &program)
{
    quint32 named = 0;
    for (int unit = CoreConfig::kUnits; unit >= 0; --unit) { // M1 must not be found inside M10
        const QString name = QLatin1Char('M') + QString::number(unit);
        if (!text.contains(name))
            continue;
        if (const int slot = program.slotOf(unit); slot >= 0)
            named |= quint32(1) << slot;
        text.remove(name);
    }
    return named;
}

ExpressionProgram programExpression(int row, const QString &text, const TriggerProgram &program)
{
    const std::optional<TruthTable> table = evaluateExpression(text);
    ExpressionProgram expression;
    expression.row = row;
    expression.text = text;
    expression.isEvaluable = table.has_value();
    expression.slots = slotsNamed(text, program);
    const int slots = int(program.units.size());
    expression.table =
        table ? table->spreadOver(expression.slots, slots) : TruthTable::constant(slots, false);
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
    return tables == Tables::AnyInput ||
           std::ranges::any_of(expressions, [input](const ExpressionProgram &expression) {
               return expression.table.at(input);
           });
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
