#include "randomtrigger.h"
#include "simulatedcore.h"

#include <capture/triggerevaluation.h>
#include <support/bittext.h>
#include <support/testmain.h>

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <set>
#include <utility>

using namespace KEO;

namespace {

int environmentNumber(const char *name, int otherwise)
{
    bool isNumber = false;
    const int number = qEnvironmentVariableIntValue(name, &isNumber);
    return isNumber ? number : otherwise;
}

// A model, sample by sample: what can be, as sets of states.

using States = std::set<bool>; ///< both: unknown

/// What a bit can be; nothing before the window and after its end is known.
QString statesOf(const QBitArray *bits, qsizetype sample)
{
    return bits && sample >= 0 && sample < bits->size()
               ? QString(bits->testBit(sample) ? u'1' : u'0')
               : QStringLiteral("01");
}

bool compares(const MatchUnit &unit, const QString &now, const QString &before)
{
    if (!isEqualityFunction(unit.func)) {
        switch (unit.func) {
        case MatchFunction::Greater:
            return now > unit.value0;
        case MatchFunction::Less:
            return now < unit.value0;
        case MatchFunction::GreaterOrEqual:
            return now >= unit.value0;
        case MatchFunction::LessOrEqual:
            return now <= unit.value0;
        default:
            return (now >= unit.value0 && now <= unit.value1) ==
                   (unit.func == MatchFunction::InRange);
        }
    }
    static const QMap<QChar, QStringList> kLetters = {
        {u'0', {"00", "10"}}, {u'1', {"01", "11"}}, {u'X', {"00", "01", "10", "11"}},
        {u'R', {"01"}},       {u'F', {"10"}},       {u'B', {"01", "10"}},
        {u'N', {"00", "11"}}};
    bool all = true;
    for (qsizetype bit = 0; bit < now.size(); ++bit)
        all = all && kLetters[unit.value0[bit]].contains(QString(before[bit]) + now[bit]);
    return all == (unit.func == MatchFunction::Equal);
}

/// Every value that a text of alternatives can be.
QStringList choices(const QStringList &bits)
{
    QStringList all{QString()};
    for (const QString &bit : bits) {
        QStringList longer;
        for (const QString &text : std::as_const(all)) {
            for (const QChar c : bit)
                longer.append(text + c);
        }
        all = longer;
    }
    return all;
}

States comparison(const MatchUnit &unit, const PortSamples &ports, qsizetype sample)
{
    QStringList now;
    QStringList before;
    for (int bit = 0; bit < unit.value0.size(); ++bit) {
        const QBitArray *bits = ports.bit(unit.trigger->index, bit);
        // Levels before count for edges only, and are many.
        const bool isEdge =
            isEqualityFunction(unit.func) && QStringLiteral("RFBN").contains(unit.value0[bit]);
        now.append(unit.value0[bit] == u'X' && isEqualityFunction(unit.func)
                       ? QStringLiteral("0")
                       : statesOf(bits, sample));
        before.append(isEdge ? statesOf(bits, sample - 1) : QStringLiteral("0"));
    }
    States states;
    for (const QString &value : choices(now)) {
        for (const QString &last : choices(before))
            states.insert(compares(unit, value, last));
    }
    return states;
}

/// A counter and how far it can have counted.
struct ModelCounter
{
    ModelCounter(const MatchUnit &unit, ArmedAt armed) : m_unit(unit)
    {
        for (int count = 0; count <= (armed ? 0 : unit.counter); ++count)
            m_counts.insert(count);
    }

    States count(const States &matches)
    {
        if (!m_unit.counter_enable)
            return matches;
        std::set<int> counts;
        States reports;
        for (const int count : m_counts) {
            for (const bool match : matches)
                counts.insert(match                ? std::min(count + 1, m_unit.counter)
                              : m_unit.countinuous ? 0
                                                   : count);
        }
        m_counts = counts;
        for (const int count : m_counts)
            reports.insert(count == m_unit.counter);
        return reports;
    }

private:
    const MatchUnit &m_unit;
    std::set<int> m_counts;
};

/// What a table, of bit number by unit, answers to all that the units can report.
States answersOf(const std::vector<States> &reports,
                 const std::function<std::pair<bool, bool>(quint32)> &table)
{
    std::vector<quint32> inputs{0};
    for (size_t slot = 0; slot < reports.size(); ++slot) {
        std::vector<quint32> longer;
        for (const quint32 input : inputs) {
            for (const bool report : reports[slot])
                longer.push_back(input | quint32(report) << slot);
        }
        inputs = longer;
    }
    States states;
    for (const quint32 input : inputs) {
        const auto [surely, possibly] = table(input);
        states.insert({surely, possibly});
    }
    return states;
}

QString textOf(const States &states)
{
    return states.size() == 2 ? QStringLiteral("?") : *states.begin() ? QStringLiteral("1") : "0";
}

QString textOf(const ConditionTrack &track, qsizetype sample)
{
    const std::optional<bool> state = track.at(sample);
    return !state ? QStringLiteral("?") : *state ? QStringLiteral("1") : "0";
}

/// As many laps of the nets as asked for.
QList<QBitArray> lapsOf(const RandomTrigger &design, const QStringList &names, int laps)
{
    QList<QBitArray> all;
    for (const QString &name : names) {
        const QBitArray &lap = design.net(name);
        QBitArray bits(lap.size() * laps);
        for (qsizetype sample = 0; sample < bits.size(); ++sample)
            bits.setBit(sample, lap.testBit(sample % lap.size()));
        all.append(bits);
    }
    return all;
}

} // namespace

class tst_TriggerEvaluation : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void knowsWhatCanBeKnown();
    void tablesFromBefore();
    void sameNames();
    void simulatedCoreTriggersAtTheFirstHit();

private:
    static void compareWithModel(RandomTrigger &design, const PortSamples &ports, ArmedAt armed);
};

void tst_TriggerEvaluation::compareWithModel(RandomTrigger &design, const PortSamples &ports,
                                             ArmedAt armed)
{
    const CoreConfig &core = design.core();
    const TriggerProgram program = triggerProgram(core);
    const TriggerEvaluation evaluation = evaluateTrigger(program, ports, armed);
    QCOMPARE(evaluation.samples, ports.samples());
    QList<const MatchUnit *> units;
    std::vector<ModelCounter> counters;
    for (const auto &unit : core.matchUnits) {
        if (unit->isInUse()) {
            units.append(unit.get());
            counters.emplace_back(*unit, armed);
        }
    }
    QCOMPARE(evaluation.matches.size(), counters.size());
    QCOMPARE(evaluation.reports.size(), counters.size());
    QCOMPARE(evaluation.expressions.size(), program.expressions.size());
    for (qsizetype sample = 0; sample < ports.samples(); ++sample) {
        const bool isArmed = sample >= armed.value_or(0);
        const States silent{false};
        QString expected;
        QString actual;
        std::vector<States> reports;
        for (size_t slot = 0; slot < counters.size(); ++slot) {
            const States matches = comparison(*units[qsizetype(slot)], ports, sample);
            reports.push_back(isArmed ? counters[slot].count(matches) : silent);
            expected += textOf(matches) + textOf(reports.back()) + u' ';
            actual += textOf(evaluation.matches[slot], sample) +
                      textOf(evaluation.reports[slot], sample) + u' ';
        }
        for (size_t e = 0; e < program.expressions.size(); ++e) {
            const ExpressionProgram &expression = program.expressions[e];
            const States states = answersOf(reports, [&expression](quint32 input) {
                return std::pair(expression.table.at(input), expression.possible().at(input));
            });
            expected += textOf(isArmed ? states : silent);
            actual += textOf(evaluation.expressions[e], sample);
        }
        const States fires = answersOf(reports, [&program](quint32 input) {
            const std::optional<bool> told = program.firesAt(input);
            return std::pair(told.value_or(false), told.value_or(true));
        });
        expected += u' ' + textOf(isArmed ? fires : silent);
        actual += u' ' + textOf(evaluation.trigger, sample);
        QVERIFY2(actual == expected,
                 qPrintable(QStringLiteral("sample %1: %2, not %3")
                                .arg(QString::number(sample), actual, expected)));
    }
}

/// Random set-ups over windows that lack signals, or the ends of some: neither more nor less is
/// known than follows from what was captured.
void tst_TriggerEvaluation::knowsWhatCanBeKnown()
{
    QRandomGenerator random(20250711);
    for (int run = 0; run < 120; ++run) {
        const int length = run % 40 == 0 ? 4100 : random.bounded(1, 140); // from block to block
        RandomTrigger design(random, std::max(length, 2));
        QStringList names;
        QList<QBitArray> captured;
        for (int net = 0; net < int(design.nets.size()); ++net) {
            if (net > 0 && random.bounded(4) == 0)
                continue;
            names.append(RandomTrigger::netName(net));
            captured.append(design.nets[size_t(net)]);
            captured.last().resize(net > 0 && random.bounded(8) == 0 ? random.bounded(length + 1)
                                                                     : length);
        }
        const PortSamples ports(design.core(), names, captured);
        // The model tries all that unknown bits can be.
        const auto isBearable = [&](const auto &unit) {
            qsizetype open = 0;
            for (int bit = 0; unit->isInUse() && bit < unit->value0.size(); ++bit) {
                const QBitArray *bits = ports.bit(unit->trigger->index, bit);
                const bool isEdge = QStringLiteral("RFBN").contains(unit->value0[bit]);
                open += (bits && bits->size() == length ? 0 : 1 + isEdge) + isEdge;
            }
            return open <= 10;
        };
        for (const auto &unit : design.core().matchUnits)
            unit->enabled = unit->enabled && isBearable(unit);
        compareWithModel(design, ports,
                         random.bounded(2) ? ArmedAt(random.bounded(length)) : ArmedAt());
        QVERIFY2(!QTest::currentTestFailed(), qPrintable(QString::number(run)));
    }
}

/// Nothing is known of tables that the core holds from before, and with expressions left out, only
/// that it triggers.
void tst_TriggerEvaluation::tablesFromBefore()
{
    CoreConfig core;
    core.dynamic = 1;
    core.signals = {{QStringLiteral("a"), {}, {}}};
    core.triggers[0]->signals = core.signals;
    core.matchUnits[2]->enabled = true;
    core.matchUnits[2]->trigger = core.triggers[0].get();
    core.matchUnits[2]->value0 = QStringLiteral("1");
    const PortSamples ports(core, {bitsOf(QStringLiteral("0110"))});
    const auto triggerText = [&](const TriggerProgram &program) {
        QString text;
        const TriggerEvaluation evaluation = evaluateTrigger(program, ports);
        for (qsizetype sample = 0; sample < evaluation.samples; ++sample)
            text += textOf(evaluation.trigger, sample);
        return text;
    };
    core.expressions = {QStringLiteral("M2")};
    core.expressionEnabled = {true};
    TriggerProgram program = triggerProgram(core);
    QCOMPARE(triggerText(program), QStringLiteral("0110"));
    program.leftOut = 1;
    QCOMPARE(triggerText(program), QStringLiteral("?11?"));
    core.expressionEnabled = {false};
    QCOMPARE(triggerText(triggerProgram(core)), QStringLiteral("1111"));
    core.expressions.clear();
    core.expressionEnabled = {true};
    QCOMPARE(triggerText(triggerProgram(core)), QStringLiteral("????"));

    // The design of a static core has units that the set-up leaves off: they may report anything. A
    // dynamic one gets tables that do not look at them.
    core.dynamic = 0;
    for (const auto &[text, fires] : std::initializer_list<std::pair<const char *, const char *>>{
             {"M1&M2", "0??0"}, {"M1|M2", "?11?"}, {"M5^!M2", "????"}, {"M2&(M7|!M7)", "0110"}}) {
        core.expressions = {QLatin1String(text)};
        program = triggerProgram(core);
        QCOMPARE(triggerText(program), QLatin1String(fires));
        for (const quint32 input : {0u, 1u}) // samples 0 and 1
            QCOMPARE(program.firesAt(input).has_value(), fires[input] != '?');
    }
}

/// Two signals of one name are the port's bit only if they do the same.
void tst_TriggerEvaluation::sameNames()
{
    CoreConfig core;
    core.triggers[3]->signals = {{QStringLiteral("a"), {}, {}}, {QString(), {}, {}}};
    const QBitArray bits = bitsOf(QStringLiteral("0110"));
    const QBitArray others = bitsOf(QStringLiteral("0111"));
    const QStringList names{QStringLiteral("a"), QString(), QStringLiteral("a")};
    const PortSamples same(core, names, {bits, bits, bits});
    QVERIFY(same.bit(3, 0));
    QCOMPARE(*same.bit(3, 0), bits);
    QVERIFY(!same.bit(3, 1)); // without a name nothing is found
    QVERIFY(!PortSamples(core, names, {bits, bits, others}).bit(3, 0));
}

/// Random set-ups in the simulated core, armed at any offset: its trigger is the first hit of the
/// evaluation that has enough samples before it, window after window, and with less captured, or
/// the arming unknown, the evaluation never says otherwise.
void tst_TriggerEvaluation::simulatedCoreTriggersAtTheFirstHit()
{
    constexpr int kLength = 1499;
    const int first = environmentNumber("SIGNALSCOPE_REHEARSAL_SEED", 1);
    const int seeds = environmentNumber("SIGNALSCOPE_REHEARSAL_SEEDS", 60);
    int setups = 0;
    int triggered = 0;
    int counted = 0;
    int windows = 0;
    int toldFromWindow = 0;
    for (int seed = first; seed < first + seeds; ++seed) {
        QRandomGenerator random{quint32(seed)};
        RandomTrigger design(random, kLength);
        CoreConfig &core = design.core();
        SimulatedCore board(design);
        QCOMPARE(board.reports, QStringList());
        QStringList names;
        for (int net = 0; net < int(design.nets.size()); ++net)
            names.append(RandomTrigger::netName(net));
        // Each set-up begins in the second lap, so that there is a sample before.
        const QList<QBitArray> laps = lapsOf(design, names, 4);
        const QList<QBitArray> capturedLaps = lapsOf(design, core.flatSignalNames(), 4);
        const PortSamples all(core, names, laps);
        const PortSamples captured(core, capturedLaps);
        qint64 now = 0; // of the stimulus
        for (int setup = 0; setup < 3; ++setup) {
            const auto fail = [&](const char *what, int window) {
                return qPrintable(QStringLiteral("seed %1, set-up %2, window %3: %4")
                                      .arg(QString::number(seed), QString::number(setup),
                                           QString::number(window), QLatin1String(what)));
            };
            design.setUp(random);
            core.ensureExpressionFlags();
            board.program();
            board.start(1);
            for (int idle = random.bounded(kLength); idle > 0 && board.isArmed(); --idle) {
                board.advance(1);
                now = (now + 1) % kLength;
            }
            board.start(0);
            ++setups;
            qsizetype armed = kLength + now;
            qsizetype at = armed;
            board.start(1);
            const TriggerProgram program = triggerProgram(core);
            for (int window = 0; window < core.window_num; ++window) {
                const TriggerEvaluation told = evaluateTrigger(program, all, armed);
                const auto hit = nextSet(told.trigger.holds, armed + core.trigger_pos);
                const qsizetype from = hit ? *hit - core.trigger_pos : 0;
                const qsizetype end = hit ? from + core.capture_amount : qsizetype(4) * kLength;
                if (!hit || end > 4 * kLength) { // it waits as long as we look
                    board.advance(4 * kLength - at - 1);
                    QVERIFY2(board.isArmed(), fail("triggered without a hit", window));
                    board.start(0);
                    now = (4 * kLength - 1) % kLength;
                    break;
                }
                board.advance(end - 1 - at);
                QVERIFY2(board.isArmed(), fail("triggered before the first hit", window));
                board.advance(1);
                now = end % kLength;
                at = end;
                QVERIFY2(board.isArmed() == (window + 1 < core.window_num),
                         fail("did not trigger at the first hit", window));
                const QList<QBitArray> samples = board.window(window);
                for (qsizetype i = 0; i < samples.size(); ++i) {
                    for (qsizetype sample = 0; sample < core.capture_amount; ++sample)
                        QVERIFY2(samples[i].testBit(sample) ==
                                     capturedLaps[i].testBit(from + sample),
                                 fail("captured another trigger", window));
                }
                // With what was captured alone, and then without knowing when it was armed.
                const TriggerEvaluation partly = evaluateTrigger(program, captured, armed);
                QVERIFY2(partly.trigger.at(*hit).value_or(true), fail("a hit is denied", window));
                const auto partlyFirst =
                    nextSet(partly.trigger.holds, armed + core.trigger_pos).value_or(*hit);
                QVERIFY2(partlyFirst >= *hit, fail("a hit too early", window));
                const TriggerEvaluation untold =
                    evaluateTrigger(program, PortSamples(core, samples));
                const std::optional<bool> holds = untold.trigger.at(core.trigger_pos);
                QVERIFY2(holds.value_or(true), fail("the trigger is denied", window));
                const qsizetype couldTrigger =
                    std::max(armed + core.trigger_pos - from, qsizetype(0));
                QVERIFY2(nextSet(untold.trigger.holds, couldTrigger).value_or(core.trigger_pos) >=
                             core.trigger_pos,
                         fail("it would have triggered before", window));
                toldFromWindow += holds.has_value();
                ++windows;
                counted += std::ranges::any_of(program.units, [](const UnitProgram &unit) {
                    return unit.count.value_or(1) > 1;
                });
                triggered += window == 0;
                armed = end;
            }
        }
        QCOMPARE(board.reports, QStringList());
    }
    qInfo(
        "%d set-ups, %d of them triggered, %d windows, %d of them with counters, in %d the trigger "
        "is known from the window alone",
        setups, triggered, windows, counted, toldFromWindow);
    QVERIFY(triggered > setups / 2 && counted > windows / 8 && toldFromWindow > windows / 3);
}

KEO_TEST_MAIN(tst_TriggerEvaluation)
#include "tst_triggerevaluation.moc"
