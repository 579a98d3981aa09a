#include "randomtrigger.h"
#include "simulatedcore.h"

#include <capture/triggerevaluation.h>
#include <capture/triggerproposal.h>
#include <support/testmain.h>

#include <algorithm>
#include <functional>

using namespace KEO;

namespace {

/// All that a user sets.
QString settingsText(const RandomTrigger &design)
{
    QString text = saveStandardConfig(design.cores);
    for (const bool flag : design.cores.front()->expressionEnabled)
        text += flag ? u'1' : u'0';
    return text;
}

bool isAsWanted(const QBitArray &net, qsizetype sample, QChar state)
{
    const bool now = net.testBit(sample);
    if (state == u'0' || state == u'1')
        return now == (state == u'1');
    if (sample == 0)
        return false;
    const bool before = net.testBit(sample - 1);
    return state == u'R' ? now && !before : before && !now;
}

/// A unit could look for it, by its port and type.
bool canBeLookedFor(const CoreConfig &core, const WantedBit &bit)
{
    return std::ranges::any_of(core.matchUnits, [&](const auto &unit) {
        return unit->isInUse() && unit->trigger->flatSignalNames().contains(bit.name) &&
               (bit.state == u'0' || bit.state == u'1' || hasEdges(unit->match_type));
    });
}

/// The nets as they are, from \a sample on.
void turnTo(RandomTrigger &design, qsizetype sample)
{
    for (QBitArray &net : design.nets) {
        const QBitArray before = net;
        for (qsizetype i = 0; i < net.size(); ++i)
            net.setBit(i, before.testBit((i + sample) % net.size()));
    }
}

} // namespace

class tst_TriggerProposal : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void triggersThere();
    void tells_data();
    void tells();
};

/// Random cores, windows and wishes: what is offered is true at that sample and, of an expression
/// that can be written, only where all that can be looked for is so; what it doesn't name stays; it
/// can be taken back; and the simulated core that has it triggers at that very sample.
void tst_TriggerProposal::triggersThere()
{
    QRandomGenerator random(17);
    int written = 0;
    int fixed = 0;
    int inCore = 0;
    for (int round = 0; round < 600; ++round) {
        const int length = random.bounded(40, 200);
        RandomTrigger design(random, length);
        CoreConfig &core = design.core();
        QStringList names;
        QList<QBitArray> captured;
        for (int net = 0; net < int(design.nets.size()); ++net) {
            if (random.bounded(6) != 0) {
                names.append(RandomTrigger::netName(net));
                captured.append(design.nets[size_t(net)]);
            }
        }
        if (names.isEmpty())
            continue;
        const PortSamples ports(core, names, captured);
        const int sample = random.bounded(1, length);
        QList<WantedBit> wanted;
        for (int i = random.bounded(1, 5); i > 0; --i) {
            const qsizetype net = random.bounded(int(names.size()));
            const bool now = captured[net].testBit(sample);
            const bool hasEdge = now != captured[net].testBit(sample - 1) && random.bounded(2);
            const WantedBit bit{names[net], hasEdge ? now ? u'R' : u'F' : now ? u'1' : u'0'};
            if (std::ranges::none_of(wanted, [&](const auto &o) { return o.name == bit.name; }))
                wanted.append(bit);
        }

        const QString before = settingsText(design);
        const QList<QString> expressionsBefore = core.expressions;
        const TriggerProposal proposal = proposeTrigger(core, wanted, ports, sample);
        const QByteArray where = QByteArray::number(round) + ' ' + proposal.refusal.toUtf8();
        QCOMPARE(settingsText(design), before);
        QList<WantedBit> possible;
        for (const WantedBit &bit : wanted) {
            if (canBeLookedFor(core, bit))
                possible.append(bit);
        }
        QCOMPARE(proposal.leftOut.isEmpty(), possible.size() == wanted.size());
        if (core.dynamic)
            QVERIFY2(proposal.isPossible() == !possible.isEmpty(), where);
        else
            QVERIFY2(!proposal.isPossible() || !possible.isEmpty(), where);
        if (!proposal.isPossible())
            continue;

        const TriggerChanges back = applyChanges(proposal.changes, core);
        const TriggerProgram program = triggerProgram(core);
        const TriggerEvaluation evaluation = evaluateTrigger(program, ports);
        QVERIFY2(evaluation.trigger.at(sample).value_or(false), where);
        const int row = proposal.expression.mid(3).toInt();
        for (size_t i = 0; i < program.expressions.size(); ++i) {
            if (program.expressions[i].row != row)
                continue;
            QVERIFY2(evaluation.expressions[i].at(sample).value_or(false), where);
            for (auto hit = nextSet(evaluation.expressions[i].holds, 0); hit && core.dynamic;
                 hit = nextSet(evaluation.expressions[i].holds, *hit + 1)) {
                for (const WantedBit &bit : possible)
                    QVERIFY2(isAsWanted(design.net(bit.name), *hit, bit.state), where);
            }
        }
        for (int other = 0; other < core.expressions.size(); ++other)
            QVERIFY(other == row || core.expressions[other] == expressionsBefore[other]);
        core.dynamic ? ++written : ++fixed;

        // A counter stands elsewhere when the core is armed anew.
        const bool hasCounted = std::ranges::any_of(program.units, [&](const UnitProgram &unit) {
            return unit.count &&
                   std::ranges::none_of(proposal.changes.units, [&](const UnitChange &change) {
                       return change.unit == unit.unit;
                   });
        });
        if (round % 2 == 0 && !hasCounted) {
            core.window_num = 1;
            core.trigger_pos = 0;
            core.capture_amount = 32;
            turnTo(design, sample);
            SimulatedCore board(design);
            board.program();
            board.start(1);
            board.advance(core.capture_amount - 1);
            QVERIFY2(board.isArmed(), where);
            board.advance(1);
            QVERIFY2(!board.isArmed(), where);
            QCOMPARE(board.reports, QStringList());
            ++inCore;
            continue;
        }
        QCOMPARE(applyChanges(back, core), proposal.changes);
        QCOMPARE(settingsText(design), before);
    }
    qInfo("%d written, %d fixed, %d in the simulated core", written, fixed, inCore);
    QVERIFY(written > 150 && fixed > 40 && inCore > 60);
}

/// Three units on the ports "a b" and "c": M0 sees no edges, M2 counts.
void tst_TriggerProposal::tells_data()
{
    using Setup = std::function<void(CoreConfig &)>;
    QTest::addColumn<Setup>("setUp");
    QTest::addColumn<QList<WantedBit>>("wanted");
    QTest::addColumn<QString>("told");
    const auto row = [](const char *name, const Setup &setUp, const QList<WantedBit> &wanted,
                        const QStringList &told) {
        QTest::newRow(name) << setUp << wanted << told.join(u'\n');
    };
    const auto is = [](const char *name, char16_t state) {
        return WantedBit{QLatin1String(name), state};
    };
    const auto dynamic = [](const QStringList &expressions, const QList<bool> &flags) {
        return [=](CoreConfig &core) {
            core.expressions = expressions;
            core.expressionEnabled = flags;
        };
    };
    const auto fixed = [](const QStringList &expressions) {
        return [=](CoreConfig &core) {
            core.dynamic = 0;
            core.expressions = expressions;
        };
    };
    row("a free row and free units", dynamic({"M0", "M0"}, {true, false}),
        {is("b", u'1'), is("c", u'R')},
        {"M1, port 0: == X1", "M2, port 1: == R, at each match",
         "exp1: M1&M2 in place of M0, checked", "! exp0 triggers besides."});
    row("nothing free", dynamic({"M0|M1", "M1&M2"}, {true, true}), {is("a", u'F')},
        {"M1, port 0: == FX", "exp1: M1 in place of M1&M2, checked",
         "! M1 is used in exp0 too, which changes with it.",
         "! exp1 was checked: what it triggered at is lost.", "! exp0 triggers besides."});
    row("already so", dynamic({"M2", "M0"}, {true, false}), {is("b", u'1')},
        {"M0, port 0: == X1", "exp1: M0, checked", "! exp0 triggers besides."});
    row("no port, no edges", dynamic({"M0"}, {false}),
        {is("a", u'R'), is("d", u'0'), is("c", u'0')},
        {"M1, port 0: == RX", "M2, port 1: == 0, at each match",
         "exp0: M1&M2 in place of M0, checked", "- No trigger port has d."});
    row("fixed, another unit in the way", fixed({"M0&!M2"}), {is("b", u'1')},
        {"M0, port 0: == X1", "M2 takes no value, so that it does not matter."});
    row("fixed, another unit to be set", fixed({"M0&M2"}), {is("b", u'1')},
        {"M0, port 0: == X1", "M2 takes any value, so that it does not matter."});
    row("fixed, the other way round", fixed({"!M0", "M1^M2"}), {is("b", u'1')},
        {"M0, port 0: != X1", "! exp1 triggers besides."});
    row("fixed, either", fixed({"M0|M2"}), {is("b", u'1'), is("c", u'1')},
        {"= The expressions are fixed in the design, and none of them can be true for this "
         "alone."});
    row("nobody sees it", fixed({"M0"}), {is("d", u'1')},
        {"- No trigger port has d.", "= No match unit in use can look for this."});
}

void tst_TriggerProposal::tells()
{
    QFETCH(const std::function<void(CoreConfig &)>, setUp);
    QFETCH(const QList<WantedBit>, wanted);
    const auto entry = [](const char *name) { return SignalEntry{QLatin1String(name), {}, {}}; };
    CoreConfig core;
    core.dynamic = 1;
    core.signals = {entry("a"), entry("b"), entry("c")};
    core.triggers[0]->signals = {entry("a"), entry("b")};
    core.triggers[1]->signals = {entry("c")};
    for (int i = 0; i < 3; ++i) {
        MatchUnit &unit = *core.matchUnits[size_t(i)];
        unit.enabled = true;
        unit.match_type = i == 0 ? MatchType::Basic : MatchType::ExtendedWithEdges;
        unit.trigger = core.triggers[i == 2 ? 1 : 0].get();
        unit.value0 = i == 2 ? QStringLiteral("1") : QStringLiteral("00");
        unit.counter_enable = i == 2;
    }
    setUp(core);
    const PortSamples ports(core, {bitsOf("0110"), bitsOf("0010"), bitsOf("0010")});
    const qsizetype sample = wanted.first().state == u'F'   ? 3
                             : wanted.first().state == u'R' ? 1
                                                            : 2;
    const TriggerProposal proposal = proposeTrigger(core, wanted, ports, sample);
    QStringList told = proposal.steps;
    for (const QString &remark : proposal.remarks)
        told.append("! " + remark);
    for (const QString &missing : proposal.leftOut)
        told.append("- " + missing);
    if (!proposal.isPossible())
        told.append("= " + proposal.refusal);
    QTEST(told.join(u'\n'), "told");
}

KEO_TEST_MAIN(tst_TriggerProposal)
#include "tst_triggerproposal.moc"
