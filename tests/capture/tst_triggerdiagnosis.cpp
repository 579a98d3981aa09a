#include "randomtrigger.h"

#include <capture/diagnosistext.h>
#include <support/bittext.h>
#include <support/testmain.h>
#include <trigger/valuetext.h>

#include <QHash>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <bit>

using namespace KEO;

namespace {

__extension__ using Wide = unsigned __int128; // a port of the random designs has up to 70 bits

Wide numberOf(const QString &digits)
{
    Wide number = 0;
    for (const QChar digit : digits)
        number = number * 2 + (digit == u'1' ? 1 : 0);
    return number;
}

Wide numberOf(const QBitArray &bits)
{
    Wide number = 0;
    for (qsizetype i = 0; i < bits.size(); ++i)
        number = number * 2 + (bits.testBit(i) ? 1 : 0);
    return number;
}

// A model, sample by sample.

/// Bits of a pattern that are captured and not as it wants them.
QList<int> wrongBits(const MatchUnit &unit, const PortSamples &ports, qsizetype sample)
{
    QList<int> wrong;
    const QString value = valueInCore(unit.value0, int(unit.trigger->flatSignalNames().size()));
    for (int bit = 0; bit < value.size(); ++bit) {
        const QBitArray *bits = ports.bit(unit.trigger->index, bit);
        const QChar letter = value[bit];
        const bool isEdge = QStringView(u"RFBN").contains(letter);
        if (letter == u'X' || !bits || sample >= bits->size() || (isEdge && sample == 0))
            continue;
        const bool now = bits->testBit(sample);
        const bool before = isEdge && bits->testBit(sample - 1);
        const bool fits = letter == u'0'   ? !now
                          : letter == u'1' ? now
                          : letter == u'R' ? now && !before
                          : letter == u'F' ? before && !now
                          : letter == u'B' ? now != before
                                           : now == before;
        if (!fits)
            wrong.append(bit);
    }
    return wrong;
}

/// The distance of a number that does not match to the nearer of its bounds; nothing if a bit is
/// not captured.
std::optional<Wide> distanceOf(const MatchUnit &unit, const PortSamples &ports, qsizetype sample)
{
    Wide value = 0;
    const int width = int(unit.trigger->flatSignalNames().size());
    for (int bit = 0; bit < width; ++bit) {
        const QBitArray *bits = ports.bit(unit.trigger->index, bit);
        if (!bits || sample >= bits->size())
            return {};
        value = value * 2 + (bits->testBit(sample) ? 1 : 0);
    }
    const Wide low = numberOf(valueInCore(unit.value0, width));
    const Wide high = numberOf(valueInCore(unit.value1, width));
    const auto between = [](Wide a, Wide b) { return a > b ? a - b : b - a; };
    if (!isRangeFunction(unit.func))
        return between(value, low);
    if (unit.func == MatchFunction::InRange)
        return value < low ? low - value : value - high;
    return std::min(between(value, low), between(value, high));
}

bool isUnknown(const ConditionTrack &track, qsizetype sample)
{
    return !track.at(sample).has_value();
}

bool is(const ConditionTrack &track, qsizetype sample, bool state)
{
    return track.at(sample) == std::optional<bool>(state);
}

/// What one sample says of an expression: units that had to differ, as bits of slots, and whether
/// it is true for sure with one of them turned.
class ModelSample
{
public:
    ModelSample(const ExpressionProgram &expression, const TriggerEvaluation &evaluation,
                qsizetype sample)
        : m_table(expression.table)
    {
        for (size_t slot = 0; slot < evaluation.reports.size(); ++slot) {
            const quint32 bit = quint32(1) << slot;
            m_unknown |= isUnknown(evaluation.reports[slot], sample) ? bit : 0;
            m_input |= is(evaluation.reports[slot], sample, true) ? bit : 0;
        }
    }
    /// 99: never.
    [[nodiscard]] int fewest() const
    {
        int fewest = 99;
        for (quint32 input = 0; input < m_table.size(); ++input) {
            if (m_table.at(input))
                fewest = std::min(fewest, std::popcount((input ^ m_input) & ~m_unknown));
        }
        return fewest;
    }
    [[nodiscard]] bool canBeTrue(quint32 turned) const { return has(turned, true); }
    [[nodiscard]] bool isTrue(quint32 turned) const { return !has(turned, false); }

private:
    [[nodiscard]] bool has(quint32 turned, bool answer) const
    {
        for (quint32 input = 0; input < m_table.size(); ++input) {
            if (((input ^ m_input ^ turned) & ~m_unknown) == 0 && m_table.at(input) == answer)
                return true;
        }
        return false;
    }

    const TruthTable &m_table;
    quint32 m_input = 0;
    quint32 m_unknown = 0;
};

/// The text names units that are not in use.
bool namesOthers(const QString &expression, const TriggerProgram &program)
{
    static const QRegularExpression name(QStringLiteral("M([0-9]+)"));
    for (auto match = name.globalMatch(expression); match.hasNext();) {
        if (program.slotOf(match.next().captured(1).toInt()) < 0)
            return true;
    }
    return false;
}

/// What was captured of a design's nets: some are missing, or their ends. All of the first is
/// there.
struct PartialWindow
{
    QStringList names;
    QList<QBitArray> captured;

    [[nodiscard]] PortSamples of(const CoreConfig &core) const { return {core, names, captured}; }
};

PartialWindow partOf(const RandomTrigger &design, QRandomGenerator &random, int length)
{
    PartialWindow window;
    for (int net = 0; net < int(design.nets.size()); ++net) {
        if (net > 0 && random.bounded(6) == 0)
            continue;
        window.names.append(RandomTrigger::netName(net));
        window.captured.append(design.nets[size_t(net)]);
        if (net > 0 && random.bounded(8) == 0)
            window.captured.last().resize(random.bounded(length + 1));
    }
    return window;
}

} // namespace

class tst_TriggerDiagnosis : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithModel();
    void namesTheDeadTerm();
    void tells();

private:
    static void compareUnit(const MatchUnit &unit, const UnitProgram &program,
                            const UnitDiagnosis &diagnosis, const PortSamples &ports,
                            const TriggerEvaluation &evaluation, size_t slot);
    static void compareExpression(const ExpressionProgram &expression,
                                  const ExpressionDiagnosis &diagnosis,
                                  const TriggerEvaluation &evaluation, const ConditionTrack &track);
};

void tst_TriggerDiagnosis::compareUnit(const MatchUnit &unit, const UnitProgram &program,
                                       const UnitDiagnosis &diagnosis, const PortSamples &ports,
                                       const TriggerEvaluation &evaluation, size_t slot)
{
    const ConditionTrack &matches = evaluation.matches[slot];
    const ConditionTrack &reports = evaluation.reports[slot];
    UnitDiagnosis expected;
    qsizetype run = 0;
    qsizetype matchRun = 0;
    qsizetype counted = 0;
    std::optional<Wide> least;
    qsizetype nearest = -1;
    for (qsizetype sample = 0; sample < evaluation.samples; ++sample) {
        expected.unknown += isUnknown(reports, sample);
        const bool hits = is(reports, sample, true);
        if (hits && !expected.firstHit)
            expected.firstHit = sample;
        expected.hits += hits;
        run = hits ? run + 1 : 0;
        expected.longestRun = std::max(expected.longestRun, run);
        const bool match = is(matches, sample, true);
        expected.matches += match;
        matchRun = match ? matchRun + 1 : 0;
        counted =
            program.counting == Counting::Total ? expected.matches : std::max(counted, matchRun);
        if (!is(matches, sample, false))
            continue;
        const std::optional<Wide> distance =
            isEqualityFunction(unit.func)
                ? Wide(unit.func == MatchFunction::Equal ? wrongBits(unit, ports, sample).size()
                                                         : 0)
                : distanceOf(unit, ports, sample);
        if (distance && (!least || *distance < *least)) {
            least = distance;
            nearest = sample;
        }
    }
    QCOMPARE(diagnosis.hits, expected.hits);
    QCOMPARE(diagnosis.misses, evaluation.samples - expected.hits - expected.unknown);
    QCOMPARE(diagnosis.unknown, expected.unknown);
    QCOMPARE(diagnosis.matches, expected.matches);
    QCOMPARE(diagnosis.firstHit, expected.firstHit);
    QCOMPARE(diagnosis.longestRun, expected.longestRun);
    QCOMPARE(diagnosis.counted,
             program.count ? int(std::min<qsizetype>(counted, *program.count)) : 0);
    QCOMPARE(diagnosis.nearest.has_value(), least.has_value());
    if (!least)
        return;
    QCOMPARE(diagnosis.nearest->sample, nearest);
    if (unit.func == MatchFunction::Equal)
        QCOMPARE(diagnosis.nearest->wrongBits, wrongBits(unit, ports, nearest));
    else if (!isEqualityFunction(unit.func))
        QVERIFY(numberOf(diagnosis.nearest->distance) == *least);
}

void tst_TriggerDiagnosis::compareExpression(const ExpressionProgram &expression,
                                             const ExpressionDiagnosis &diagnosis,
                                             const TriggerEvaluation &evaluation,
                                             const ConditionTrack &track)
{
    qsizetype hits = 0;
    int least = 99;
    QHash<QByteArray, QList<qsizetype>> alike; // samples by what the expression's units do there
    QSet<QByteArray> nearestStates;
    const auto stateAt = [&](qsizetype sample) {
        QByteArray state;
        for (size_t slot = 0; slot < evaluation.reports.size(); ++slot) {
            const ConditionTrack &reports = evaluation.reports[slot];
            if ((expression.slots >> slot) & 1)
                state.append(isUnknown(reports, sample)  ? '?'
                             : is(reports, sample, true) ? '1'
                                                         : '0');
        }
        return state;
    };
    QList<qsizetype> turnedHits(qsizetype(evaluation.reports.size()));
    for (qsizetype sample = 0; sample < evaluation.samples; ++sample) {
        hits += is(track, sample, true);
        if (!is(track, sample, false))
            continue;
        const ModelSample model(expression, evaluation, sample);
        alike[stateAt(sample)].append(sample);
        if (model.fewest() < least)
            nearestStates.clear();
        least = std::min(least, model.fewest());
        if (model.fewest() == least)
            nearestStates.insert(stateAt(sample));
        for (int slot = 0; slot < turnedHits.size(); ++slot) {
            if (!isUnknown(evaluation.reports[size_t(slot)], sample))
                turnedHits[slot] += model.isTrue(quint32(1) << slot);
        }
    }
    QCOMPARE(diagnosis.hits, hits);
    if (hits > 0) {
        QVERIFY(!diagnosis.nearest && diagnosis.dead.isEmpty());
        return;
    }
    QCOMPARE(diagnosis.nearest.has_value(), least < 99);
    if (diagnosis.nearest) {
        std::pair seldom(evaluation.samples + 1, qsizetype(-1)); // how many, the first one
        for (const QByteArray &state : nearestStates)
            seldom = std::min(seldom, std::pair(alike[state].size(), alike[state].first()));
        const qsizetype nearest = seldom.second;
        QCOMPARE(diagnosis.nearest->sample, nearest);
        QCOMPARE(diagnosis.nearest->differing.size(), least);
        quint32 turned = 0;
        for (const auto &[slot, reports] : diagnosis.nearest->differing) {
            turned |= quint32(1) << slot;
            QVERIFY(is(evaluation.reports[size_t(slot)], nearest, reports));
        }
        QVERIFY(ModelSample(expression, evaluation, nearest).canBeTrue(turned));
    }
    for (int slot = 0; slot < turnedHits.size(); ++slot) {
        const ConditionTrack &reports = evaluation.reports[size_t(slot)];
        bool ever = false;
        bool always = true;
        for (qsizetype sample = 0; sample < evaluation.samples; ++sample) {
            ever |= is(reports, sample, true);
            always &= !is(reports, sample, false);
        }
        const auto dead = std::ranges::find(diagnosis.dead, slot, &DeadTerm::slot);
        const bool isNamed = dead != diagnosis.dead.end();
        QCOMPARE(isNamed, turnedHits[slot] > 0 && (!ever || always));
        QCOMPARE(isNamed ? dead->hits : 0, isNamed ? turnedHits[slot] : 0);
    }
}

/// Random set-ups over windows that lack signals, or the ends of some.
void tst_TriggerDiagnosis::agreesWithModel()
{
    QRandomGenerator random(15);
    int missed = 0;
    int dead = 0;
    for (int round = 0; round < 300; ++round) {
        const int length = random.bounded(2, 200);
        RandomTrigger design(random, length);
        const PortSamples ports = partOf(design, random, length).of(design.core());
        const TriggerProgram program = triggerProgram(design.core());
        const TriggerEvaluation evaluation = evaluateTrigger(program, ports);
        const TriggerDiagnosis diagnosis = diagnoseTrigger(program, ports, evaluation);
        QCOMPARE(diagnosis.units.size(), size_t(program.units.size()));
        QCOMPARE(diagnosis.expressions.size(), program.expressions.size());
        for (size_t slot = 0; slot < diagnosis.units.size(); ++slot) {
            const UnitProgram &unit = program.units[qsizetype(slot)];
            compareUnit(*design.core().matchUnitByIndex(unit.unit), unit, diagnosis.units[slot],
                        ports, evaluation, slot);
            QVERIFY2(!QTest::currentTestFailed(), qPrintable(QString::number(round)));
            missed += diagnosis.units[slot].hits == 0 && diagnosis.units[slot].nearest;
        }
        for (size_t i = 0; i < program.expressions.size(); ++i) {
            compareExpression(program.expressions[i], diagnosis.expressions[i], evaluation,
                              evaluation.expressions[i]);
            QVERIFY2(!QTest::currentTestFailed(), qPrintable(QString::number(round)));
            dead += !diagnosis.expressions[i].dead.isEmpty();
        }
    }
    QVERIFY2(missed > 100 && dead > 30, qPrintable(QStringLiteral("%1 %2").arg(missed).arg(dead)));
}

/// An expression that is true in the window, joined with a unit that never matches there, or
/// always.
void tst_TriggerDiagnosis::namesTheDeadTerm()
{
    QRandomGenerator random(16);
    int planted = 0;
    for (int round = 0; round < 400; ++round) {
        const int length = random.bounded(20, 200);
        RandomTrigger design(random, length);
        CoreConfig &core = design.core();
        core.dynamic = 1;
        core.expressionEnabled.fill(true, core.expressions.size());
        const PartialWindow window = partOf(design, random, length);
        const TriggerProgram before = triggerProgram(core);
        const TriggerEvaluation evaluation = evaluateTrigger(before, window.of(core));
        const auto hitting =
            std::ranges::find_if(evaluation.expressions, [](const ConditionTrack &track) {
                return setSamples(track.holds) > 0;
            });
        const auto spare = std::ranges::find_if(
            core.matchUnits, [](const auto &unit) { return unit->trigger == nullptr; });
        const auto port = std::ranges::find_if(
            core.triggers, [](const auto &unused) { return unused->signals.isEmpty(); });
        if (hitting == evaluation.expressions.end())
            continue;
        const auto row = before.expressions[size_t(hitting - evaluation.expressions.begin())].row;
        if (namesOthers(core.expressions[row], before)) // and then means something else when joined
            continue;

        const bool isNever = random.bounded(2) == 0;
        MatchUnit &unit = **spare;
        (*port)->signals.fill({RandomTrigger::netName(0), {}, {}}, 3);
        unit.trigger = port->get();
        unit.enabled = true;
        unit.func = isNever ? MatchFunction::Equal : MatchFunction::NotEqual;
        unit.value0 = QStringLiteral("010"); // of one and the same net
        core.expressions = {
            QStringLiteral("(%1)&%2M%3")
                .arg(core.expressions[row], isNever ? QString() : QStringLiteral("!"))
                .arg(unit.index)};
        core.expressionEnabled = {true};
        const PortSamples ports = window.of(core);
        const TriggerProgram program = triggerProgram(core);
        const TriggerDiagnosis diagnosis =
            diagnoseTrigger(program, ports, evaluateTrigger(program, ports));
        const auto &dead = diagnosis.expressions.front().dead;
        const auto named = std::ranges::find(dead, program.slotOf(unit.index), &DeadTerm::slot);
        QVERIFY2(named != dead.end(), qPrintable(core.expressions.first()));
        QCOMPARE(named->hits, setSamples(hitting->holds));
        QCOMPARE(named->reports, !isNever);
        const QString sentence = QStringLiteral("exp0 fails by M%1 alone, ").arg(unit.index);
        const auto tells = [&](const DiagnosisLine &line) {
            return line.text.startsWith(sentence) && line.sample == named->firstHit;
        };
        QVERIFY(std::ranges::any_of(diagnosisLines(core, program, diagnosis), tells));
        ++planted;
    }
    QVERIFY2(planted > 150, qPrintable(QString::number(planted)));
}

/// The sentences, each kind once.
void tst_TriggerDiagnosis::tells()
{
    CoreConfig core;
    core.dynamic = 1;
    core.storage_depth = core.capture_amount = 128;
    const auto entry = [](const char *name) { return SignalEntry{QLatin1String(name), {}, {}}; };
    core.triggers[0]->signals = {entry("a"), entry("b"), entry("c"), entry("d")};
    core.triggers[1]->signals = {entry("a"), entry("e")};
    core.triggers[2]->signals =
        QList<SignalEntry>(5, entry("a")) + QList<SignalEntry>(6, entry("b"));
    core.signals = core.triggers[0]->signals;
    core.signals[1].text = QStringLiteral("enable");
    core.triggers[0]->signals[1].text = QStringLiteral("enable");
    const auto use = [&](int index, int port, MatchFunction function, const char *value) {
        MatchUnit &unit = *core.matchUnits[size_t(index)];
        unit.enabled = true;
        unit.match_type = MatchType::RangeWithEdges;
        unit.trigger = core.triggers[size_t(port)].get();
        unit.func = function;
        unit.value0 = unit.value1 = QLatin1String(value);
        return &unit;
    };
    use(0, 0, MatchFunction::Equal, "001R");
    use(6, 0, MatchFunction::Equal, "XXRX");
    use(1, 0, MatchFunction::InRange, "0100")->value1 = "1011";
    use(2, 0, MatchFunction::Equal, "XXX1");
    MatchUnit *counting = use(3, 0, MatchFunction::NotEqual, "0000");
    counting->counter_enable = counting->countinuous = true;
    counting->counter = 4;
    use(4, 1, MatchFunction::Equal, "F1");
    use(5, 0, MatchFunction::Less, "0000");
    use(7, 2, MatchFunction::Equal, "11111000000");
    core.expressions = QStringList{"M0&!M2&!M6", "M1&M3", "M2&M4", "M5", "M7"};
    core.expressionEnabled.fill(true, core.expressions.size());
    const PortSamples ports(
        core, {bitsOf("000100"), bitsOf("000100"), bitsOf("001000"), bitsOf("001101")});
    const TriggerProgram program = triggerProgram(core);
    QStringList lines;
    for (const DiagnosisLine &line : diagnosisLines(
             core, program, diagnoseTrigger(program, ports, evaluateTrigger(program, ports))))
        lines.append(line.text +
                     (line.sample ? QStringLiteral(" [%1]").arg(*line.sample) : QString()));
    const QStringList expected{
        "As it is set now, it triggers at none of 6 samples.",
        "exp0 can never be true, because its units compare the same port.",
        "exp3 can never be true, because M5 can never match.",
        "M5 can never match: no value is less.",
        "exp1 came nearest at sample 0, where M1 and M3 had to report besides. [0]",
        "exp2 fails by M4 alone, which never reports: otherwise it would be true at 3 samples, "
        "first at 2. [2]",
        "exp3 fails by M5 alone, which never reports: otherwise it would be true at 6 samples, "
        "first at 0. [0]",
        "exp4 fails by M7 alone, which never reports: otherwise it would be true at 6 samples, "
        "first at 0. [0]",
        "M0 reports at one sample, 2. [2]",
        "M1 never matched. Nearest was sample 2 with 0011, which is 1 from 0100. [2]",
        "M2 reports at 3 samples, first at 2, at most 2 in a row. [2]",
        "M3 never reports: it waits for 4 matches in a row, and there were at most 2.",
        "M4 never matched. Nearest was sample 1: a did not fall. [1]",
        "What M4 does is not known at 2 of 6 samples.",
        "M6 reports at one sample, 2. [2]",
        "M7 never matched. Nearest was sample 0: a was 0, a was 0, a was 0, a was 0 and one more "
        "bit was wrong. [0]",
    };
    QCOMPARE(lines.join(u'\n'), expected.join(u'\n'));
}

KEO_TEST_MAIN(tst_TriggerDiagnosis)
#include "tst_triggerdiagnosis.moc"
