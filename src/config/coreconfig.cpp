#include "coreconfig.h"

#include <algorithm>

namespace KEO {
namespace {

/// The record of \a records with that `index`, or null.
template <typename Record>
Record *recordByIndex(const std::vector<std::unique_ptr<Record>> &records, int index)
{
    const auto found = std::find_if(records.begin(), records.end(),
                                    [index](const auto &record) { return record->index == index; });
    return found == records.end() ? nullptr : found->get();
}

} // namespace

QStringList TriggerPort::flatSignalNames() const
{
    return KEO::flatSignalNames(signals);
}

bool MatchUnit::isInUse() const
{
    return enabled && trigger && !trigger->signals.isEmpty();
}

CoreConfig::CoreConfig(int coreIndex) : index(coreIndex)
{
    for (int i = 0; i < kPorts; ++i) {
        triggers.push_back(std::make_unique<TriggerPort>());
        triggers.back()->core = this;
        triggers.back()->index = i;
    }
    for (int i = 0; i < kUnits; ++i) {
        matchUnits.push_back(std::make_unique<MatchUnit>());
        matchUnits.back()->core = this;
        matchUnits.back()->index = i;
    }
}

CoreConfig::~CoreConfig() = default;

QStringList CoreConfig::flatSignalNames() const
{
    return KEO::flatSignalNames(signals);
}

QList<TriggerPort *> CoreConfig::portsWithSignals() const
{
    QList<TriggerPort *> ports;
    for (const auto &port : triggers) {
        if (!port->signals.isEmpty())
            ports += port.get();
    }
    return ports;
}

QList<MatchUnit *> CoreConfig::enabledUnits() const
{
    QList<MatchUnit *> units;
    for (const auto &unit : matchUnits) {
        if (unit->enabled)
            units += unit.get();
    }
    return units;
}

TriggerPort *CoreConfig::triggerByIndex(int portIndex) const
{
    return recordByIndex(triggers, portIndex);
}

MatchUnit *CoreConfig::matchUnitByIndex(int unitIndex) const
{
    return recordByIndex(matchUnits, unitIndex);
}

void CoreConfig::ensureExpressionFlags()
{
    if (expressionEnabled.isEmpty())
        expressionEnabled.fill(true, expressions.size());
}

void CoreConfig::setExpression(const QString &expression, int position)
{
    if (position >= 0 && position < expressions.size())
        expressions[position] = expression;
}

SignalEntry CoreConfig::signalAtPosition(int position) const
{
    return KEO::signalAtPosition(signals, position);
}

bool CoreConfig::applySignalNames(const QMap<int, SignalNames> &table)
{
    return KEO::applySignalNames(signals, table);
}

int CoreConfig::requiredRegisterWidth() const
{
    qsizetype width = std::max<qsizetype>(kMinRegisterWidth, signalBits(signals) + 1);
    for (const auto &port : triggers)
        width = std::max(width, signalBits(port->signals));
    for (const MatchUnit *unit : enabledUnits()) {
        if (unit->counter_enable)
            width = std::max<qsizetype>(width, std::min(unit->counter_width, kMaxCounterWidth));
    }
    return int(width);
}

} // namespace KEO
