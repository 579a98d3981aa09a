#pragma once

#include <config/coreconfig.h>
#include <trigger/randomunit.h>

#include <QBitArray>
#include <QRandomGenerator>

#include <algorithm>
#include <vector>

/// A standard core over nets whose every sample is made up, with a trigger as any user could set
/// it, and values that the nets really take, so that it comes to triggers.
struct RandomTrigger
{
    /// What the design fixes. The nets are called n0, n1, ... and have \a length samples each,
    /// after which the first follows the last.
    RandomTrigger(QRandomGenerator &random, int length)
    {
        for (int net = random.bounded(4, 30); net > 0; --net)
            nets.push_back(randomLevels(random, length));
        cores.push_back(std::make_unique<KEO::CoreConfig>(random.bounded(16)));
        KEO::CoreConfig &core = this->core();
        core.sample_clock = QStringLiteral("clk");
        core.dynamic = random.bounded(2);
        core.storage_depth = 1024;
        for (int net = 0; net < int(nets.size()); ++net) {
            if (random.bounded(5) != 0)
                core.signals.append({netName(net), {}, {}});
        }
        core.signals.append({netName(0), {}, {}}); // twice, it may be
        QList<int> ports;
        for (int port = random.bounded(1, 5); port > 0; --port) {
            ports.append(random.bounded(KEO::CoreConfig::kPorts));
            core.triggers[size_t(ports.last())]->signals = randomPort(random);
        }
        for (int unit = random.bounded(1, 7); unit > 0; --unit) {
            const int index = random.bounded(KEO::CoreConfig::kUnits);
            if (core.matchUnits[size_t(index)]->trigger)
                continue;
            KEO::MatchUnit &added = *core.matchUnits[size_t(index)];
            added.enabled = random.bounded(8) != 0;
            added.match_type = KEO::MatchType(random.bounded(6));
            added.counter_enable = random.bounded(3) == 0;
            added.counter_width = random.bounded(1, 5);
            added.trigger = core.triggers[size_t(ports[random.bounded(ports.size())])].get();
        }
        const auto isInUse = [](const auto &unit) { return unit->isInUse(); };
        if (!core.dynamic && std::ranges::none_of(core.matchUnits, isInUse))
            (*std::ranges::find_if(core.matchUnits, [](const auto &unit) {
                return unit->trigger != nullptr;
            }))->enabled = true; // the design has what its expressions name
        for (int expression = random.bounded(1, 4); expression > 0; --expression)
            core.expressions.append(randomExpression(random, random.bounded(4)));
        setUp(random);
    }

    /// What a user sets.
    void setUp(QRandomGenerator &random)
    {
        KEO::CoreConfig &core = this->core();
        core.window_num = random.bounded(3) == 0 ? random.bounded(2, 5) : 1;
        core.capture_amount = 32 << random.bounded(4);
        core.trigger_pos = random.bounded(2) ? random.bounded(core.capture_amount - 8) : 0;
        for (const auto &unit : core.matchUnits) {
            if (unit->trigger) {
                setRandomly(*unit, random);
                aim(*unit, random);
            }
        }
        if (!core.dynamic)
            return;
        core.expressionEnabled.clear();
        for (QString &expression : core.expressions) {
            core.expressionEnabled.append(random.bounded(4) != 0);
            expression = randomExpression(random, random.bounded(4));
        }
    }

    [[nodiscard]] KEO::CoreConfig &core() { return *cores.front(); }
    [[nodiscard]] const QBitArray &net(const QString &name) const
    {
        return nets[name.mid(1).toULongLong()];
    }
    [[nodiscard]] static QString netName(int net) { return QStringLiteral("n%1").arg(net); }

    KEO::CoreList cores; ///< one
    std::vector<QBitArray> nets;

private:
    static QBitArray randomLevels(QRandomGenerator &random, int length)
    {
        const int calm = QList<int>{2, 8, 40}.at(random.bounded(3));
        QBitArray levels(length);
        bool level = random.bounded(2);
        for (int sample = 0; sample < length; ++sample) {
            level ^= random.bounded(calm) == 0;
            levels.setBit(sample, level);
        }
        return levels;
    }

    /// Single signals and buses; a net may be there twice.
    QList<KEO::SignalEntry> randomPort(QRandomGenerator &random) const
    {
        const auto entry = [&] {
            return KEO::SignalEntry{netName(random.bounded(int(nets.size()))), {}, {}};
        };
        QList<KEO::SignalEntry> port;
        const int width = QList<int>{1, 1, 2, 3, 5, 9, 20, 70}.at(random.bounded(8));
        for (int left = width; left > 0;) {
            KEO::SignalEntry added = entry();
            const int members = random.bounded(2) ? std::min(left, random.bounded(1, 6)) : 0;
            for (int member = 0; member < members; ++member)
                added.members.append(entry());
            if (members > 0)
                added.name = QStringLiteral("n1"); // a bus that is called as a net is
            left -= std::max(members, 1);
            port.append(added);
        }
        return port;
    }

    /// Of units in use; one that is chosen at run time may name others.
    QString randomExpression(QRandomGenerator &random, int depth)
    {
        if (depth > 0) {
            const QString inner = randomExpression(random, depth - 1) +
                                  QStringLiteral("&|^").at(random.bounded(3)) +
                                  randomExpression(random, random.bounded(depth));
            return random.bounded(3) ? inner : (random.bounded(2) ? "!(" : "(") + inner + u')';
        }
        QStringList units;
        for (const auto &unit : core().matchUnits) {
            if (unit->trigger && (unit->isInUse() || (core().dynamic && random.bounded(4) == 0)))
                units.append(QStringLiteral("M%1").arg(unit->index));
        }
        const QString unit =
            units.isEmpty() ? QStringLiteral("M3") : units.at(random.bounded(int(units.size())));
        return random.bounded(4) == 0 ? u'!' + unit : unit;
    }

    /// Random values hardly ever come up on a wide port: takes most of them from a sample.
    void aim(KEO::MatchUnit &unit, QRandomGenerator &random) const
    {
        if (random.bounded(5) == 0)
            return;
        const QStringList names = unit.trigger->flatSignalNames();
        const int sample = random.bounded(1, int(nets.front().size()));
        const int other = random.bounded(int(nets.front().size()));
        for (qsizetype bit = 0; bit < names.size(); ++bit) {
            const bool now = net(names[bit]).testBit(sample);
            const bool before = net(names[bit]).testBit(sample - 1);
            const QChar level = now ? u'1' : u'0';
            if (!isEqualityFunction(unit.func)) {
                unit.value0[bit] = level;
                unit.value1[bit] = net(names[bit]).testBit(other) ? u'1' : u'0';
            } else if (random.bounded(2)) {
                unit.value0[bit] = u'X';
            } else if (hasEdges(unit.match_type) && random.bounded(4) == 0) {
                unit.value0[bit] = now == before       ? u'N'
                                   : random.bounded(2) ? u'B'
                                   : now               ? u'R'
                                                       : u'F';
            } else {
                unit.value0[bit] = level;
            }
        }
        if (isRangeFunction(unit.func) && unit.value0 > unit.value1)
            std::swap(unit.value0, unit.value1);
    }
};
