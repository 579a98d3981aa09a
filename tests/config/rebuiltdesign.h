#pragma once

#include <config/coreconfig.h>
#include <config/poweroftwo.h>
#include <trigger/randomunit.h>

#include <QRandomGenerator>

#include <algorithm>

/// Random designs of standard cores, what a user sets in them, and what a new build makes of them.
/// A net has one name wherever it is captured or compared.
namespace rebuilt {

inline KEO::CoreList copyOf(const KEO::CoreList &cores)
{
    KEO::CoreList copies;
    for (const auto &core : cores)
        copies.push_back(KEO::copyOf(*core));
    return copies;
}

/// A few nets stand twice, where \a canRepeat.
inline QList<KEO::SignalEntry> randomSignals(QRandomGenerator &random, const QString &prefix,
                                             int count, bool canRepeat)
{
    QList<KEO::SignalEntry> signals;
    for (int i = 0; i < count; ++i) {
        const int net = canRepeat && random.bounded(9) == 0 ? 0 : i;
        const KEO::SignalEntry bit{prefix + QString::number(net), {}, {}};
        if (signals.isEmpty() || signals.back().members.isEmpty() || random.bounded(4) == 0)
            signals.append(random.bounded(3) ? bit : KEO::SignalEntry{prefix + "bus", {}, {bit}});
        else
            signals.back().members.append(bit);
    }
    return signals;
}

inline void randomizeType(KEO::MatchUnit &unit, QRandomGenerator &random)
{
    unit.match_type = KEO::MatchType(random.bounded(6));
    unit.counter_enable = random.bounded(2);
    unit.counter_width = 1 + random.bounded(3);
}

/// The expression of a random handful of units in use.
inline QString randomExpression(const KEO::CoreConfig &core, QRandomGenerator &random)
{
    QString text;
    for (const KEO::MatchUnit *unit : core.enabledUnits()) {
        if (!unit->isInUse() || (!text.isEmpty() && random.bounded(2)))
            continue;
        if (!text.isEmpty())
            text += u"&|^"[random.bounded(3)];
        text += (random.bounded(4) ? "M%1" : "!M%1");
        text = text.arg(unit->index);
    }
    return text.isEmpty() ? QStringLiteral("M0") : text;
}

/// As the tool flow writes it.
inline KEO::CoreList randomDesign(QRandomGenerator &random, int coreCount)
{
    KEO::CoreList cores;
    for (int index = 0; index < coreCount; ++index) {
        auto core = std::make_unique<KEO::CoreConfig>(index);
        core->module_name = QStringLiteral("module%1").arg(index);
        core->sample_clock = QStringLiteral("clk");
        core->dynamic = random.bounded(4) != 0;
        core->storage_depth = 256 << random.bounded(3);
        core->capture_amount = 64;
        core->signals = randomSignals(random, "c", 3 + random.bounded(12), false);
        for (int port = 0; port < 3; ++port)
            core->triggers[port]->signals = randomSignals(random, QStringLiteral("p%1_").arg(port),
                                                          1 + random.bounded(6), true);
        for (const int number : {0, 1, 3, 4, 7}) {
            KEO::MatchUnit &unit = *core->matchUnits[number];
            unit.enabled = random.bounded(5) != 0;
            randomizeType(unit, random);
            unit.trigger = core->triggers[number % 4].get(); // of which the last has no signals
            unit.counter = 1;
            unit.value0 = QString(KEO::signalBits(unit.trigger->signals), u'X');
        }
        for (int row = 0; row < 1 + random.bounded(3); ++row)
            core->expressions.append(randomExpression(*core, random));
        core->active = index == 0 ? 1 : 0;
        cores.push_back(std::move(core));
    }
    return cores;
}

inline void setNumbersRandomly(KEO::CoreConfig &core, QRandomGenerator &random)
{
    core.window_num = 1 + random.bounded(8);
    const int room = core.storage_depth / KEO::roundUpToPowerOfTwo(core.window_num);
    core.capture_amount = 32 << random.bounded(8);
    while (core.capture_amount > room)
        core.capture_amount /= 2;
    core.trigger_pos = random.bounded(3) ? random.bounded(core.capture_amount - 8) : 0;
}

/// All that a user can set.
inline void setUpRandomly(const KEO::CoreList &cores, QRandomGenerator &random)
{
    for (const auto &core : cores) {
        core->ensureExpressionFlags();
        core->active = random.bounded(3) != 0;
        if (random.bounded(4))
            setNumbersRandomly(*core, random);
        for (KEO::MatchUnit *unit : core->enabledUnits()) {
            if (!unit->isInUse() || random.bounded(5) == 0)
                continue;
            const int count = unit->counter;
            setRandomly(*unit, random);
            if (!unit->counter_enable) {
                unit->counter = count;
                unit->countinuous = false;
            }
        }
        for (int row = 0; row < core->expressions.size() && core->dynamic; ++row) {
            core->expressions[row] = randomExpression(*core, random);
            core->expressionEnabled[row] = random.bounded(4) != 0;
        }
        QMap<int, KEO::SignalNames> names;
        for (const QString &name : core->flatSignalNames()) {
            const QString text = random.bounded(4) ? QString() : "my " + name;
            names.insert(int(names.size()), {name, text});
        }
        core->applySignalNames(names);
    }
}

/// The same nets in another order, and among them \a more.
inline QList<KEO::SignalEntry> permuted(const QList<KEO::SignalEntry> &signals, int more,
                                        QRandomGenerator &random)
{
    QStringList names = KEO::flatSignalNames(signals);
    for (int i = 0; i < more; ++i)
        names.append(QStringLiteral("new%1").arg(i));
    std::shuffle(names.begin(), names.end(), random);
    QList<KEO::SignalEntry> entries;
    for (const QString &name : std::as_const(names))
        entries.append({name, {}, {}});
    return entries;
}

/// Signals are permuted and added. With numbers on a port it stays as it is.
inline void permute(KEO::CoreConfig &now, const KEO::CoreConfig &setUp, QRandomGenerator &random)
{
    for (int port = 0; port < 3; ++port) {
        const bool hasNumbers = std::ranges::any_of(setUp.matchUnits, [&](const auto &unit) {
            return unit->trigger == setUp.triggers[port].get() && !isEqualityFunction(unit->func);
        });
        if (!hasNumbers)
            now.triggers[port]->signals =
                permuted(now.triggers[port]->signals, random.bounded(4), random);
    }
    now.signals = permuted(now.signals, random.bounded(4), random);
}

/// Anything that a tool flow may change may be changed.
inline void rebuildRandomly(KEO::CoreList &cores, QRandomGenerator &random)
{
    if (cores.size() > 1 && random.bounded(4) == 0)
        cores.erase(cores.begin() + random.bounded(int(cores.size())));
    for (const auto &core : cores) {
        if (random.bounded(3) == 0)
            core->storage_depth = 8 << random.bounded(8);
        if (random.bounded(6) == 0)
            core->dynamic = !core->dynamic;
        if (random.bounded(3) == 0)
            core->capture_amount = 32;
        for (const auto &port : core->triggers) {
            if (!port->signals.isEmpty() && random.bounded(2))
                port->signals = permuted(port->signals, random.bounded(3), random);
            if (!port->signals.isEmpty() && random.bounded(3) == 0)
                port->signals.removeFirst();
        }
        for (const auto &unit : core->matchUnits) {
            if (random.bounded(4) == 0)
                randomizeType(*unit, random);
            if (random.bounded(6) == 0)
                unit->enabled = !unit->enabled;
        }
        while (random.bounded(3) == 0 && !core->expressions.isEmpty())
            core->expressions.removeLast();
        while (random.bounded(3) == 0)
            core->expressions.append(randomExpression(*core, random));
        core->signals = permuted(core->signals, random.bounded(3), random);
        if (random.bounded(2))
            core->signals.removeFirst();
    }
    if (random.bounded(4) == 0)
        cores.insert(cores.begin(), std::make_unique<KEO::CoreConfig>(9));
    for (const auto &core : cores)
        core->active = core == cores.front() ? 1 : 0;
}

} // namespace rebuilt
