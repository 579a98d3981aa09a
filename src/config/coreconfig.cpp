#include "coreconfig.h"

#include <algorithm>

namespace KEO {
namespace {

qsizetype bitsOf(const SignalEntry &entry)
{
    return std::max<qsizetype>(1, entry.members.size());
}

/// The record of \a records with that `index`, or null.
template <typename Record>
Record *recordByIndex(const std::vector<std::unique_ptr<Record>> &records, int index)
{
    const auto found = std::find_if(records.begin(), records.end(),
                                    [index](const auto &record) { return record->index == index; });
    return found == records.end() ? nullptr : found->get();
}

} // namespace

QStringList flatSignalNames(const QList<SignalEntry> &signals)
{
    QStringList names;
    for (const SignalEntry &entry : signals) {
        if (entry.members.isEmpty())
            names += entry.name;
        for (const SignalEntry &member : entry.members)
            names += member.name;
    }
    return names;
}

qsizetype signalBits(const QList<SignalEntry> &signals)
{
    qsizetype bits = 0;
    for (const SignalEntry &entry : signals)
        bits += bitsOf(entry);
    return bits;
}

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
    if (position < 0)
        return {};
    qsizetype left = position;
    for (const SignalEntry &entry : signals) {
        if (left < bitsOf(entry))
            return entry.members.isEmpty() ? entry : entry.members[left];
        left -= bitsOf(entry);
    }
    return {};
}

bool CoreConfig::applySignalNames(const QMap<int, SignalNames> &table)
{
    if (table.size() != signalBits(signals))
        return false;
    int position = 0;
    const auto rename = [&](SignalEntry &entry) {
        const SignalNames names = table.value(position++);
        entry.name = names.name;
        entry.text = names.text;
    };
    for (SignalEntry &entry : signals) {
        if (entry.members.isEmpty())
            rename(entry);
        for (SignalEntry &member : entry.members)
            rename(member);
    }
    return true;
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
