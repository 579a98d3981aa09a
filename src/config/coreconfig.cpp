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

std::unique_ptr<CoreConfig> copyOf(const CoreConfig &core)
{
    auto copy = std::make_unique<CoreConfig>(core.index);
    copy->active = core.active;
    copy->sample_clock = core.sample_clock;
    copy->trig_type = core.trig_type;
    copy->dynamic = core.dynamic;
    copy->storage_depth = core.storage_depth;
    copy->capture_amount = core.capture_amount;
    copy->trigger_pos = core.trigger_pos;
    copy->window_num = core.window_num;
    for (size_t port = 0; port < core.triggers.size(); ++port)
        copy->triggers[port]->signals = core.triggers[port]->signals;
    for (size_t unit = 0; unit < core.matchUnits.size(); ++unit) {
        MatchUnit &own = *copy->matchUnits[unit];
        own = *core.matchUnits[unit];
        own.core = copy.get();
        own.trigger = own.trigger ? copy->triggerByIndex(own.trigger->index) : nullptr;
    }
    copy->expressions = core.expressions;
    copy->expressionEnabled = core.expressionEnabled;
    copy->signals = core.signals;
    copy->module_name = core.module_name;
    return copy;
}

} // namespace KEO
