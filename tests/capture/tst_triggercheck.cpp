#include <capture/triggercheck.h>
#include <capture/triggerprogram.h>

#include <config/coreconfig.h>
#include <support/testmain.h>

#include <QRegularExpression>

#include <algorithm>
#include <functional>
#include <random>
#include <set>

using namespace KEO;

namespace {

using Subject = TriggerFinding::Subject;
using Weight = TriggerFinding::Weight;

QList<SignalEntry> singles(int count)
{
    return QList<SignalEntry>(count, {QStringLiteral("s"), {}, {}});
}

/// A dynamic core that can be captured, with 16 ports of \a width bits; no unit is on.
void makeCore(CoreConfig &core, int width)
{
    core.dynamic = 1;
    core.signals = singles(4);
    for (const auto &port : core.triggers)
        port->signals = singles(width);
}

MatchUnit &useUnit(CoreConfig &core, int index, int port, MatchFunction func, const QString &value0,
                   const QString &value1 = {})
{
    MatchUnit &unit = *core.matchUnits[size_t(index)];
    unit.enabled = true;
    unit.match_type = MatchType::RangeWithEdges;
    unit.trigger = core.triggers[size_t(port)].get();
    unit.func = func;
    unit.value0 = value0;
    unit.value1 = value1.isEmpty() ? value0 : value1;
    return unit;
}

void useExpression(CoreConfig &core, const QString &text, bool isChecked = true)
{
    core.expressions.append(text);
    core.expressionEnabled.append(isChecked);
}

/// The findings, a line each: subject, index, "!" for an obstacle, text.
QStringList linesOf(const CoreConfig &core)
{
    static const QStringList subjects = {"core", "M", "exp", "amount"};
    QStringList lines;
    for (const TriggerFinding &finding : checkTrigger(core))
        lines.append(
            QStringLiteral("%1%2%3 %4")
                .arg(subjects[int(finding.subject)],
                     finding.subject == Subject::Unit || finding.subject == Subject::Expression
                         ? QString::number(finding.index)
                         : QString(),
                     finding.weight == Weight::Obstacle ? QStringLiteral("!") : QString(),
                     finding.text));
    return lines;
}

// A model of its own: units as the words of the manual have them, on values and the values before.

struct ModelUnit
{
    int number = 0;
    int port = 0;
    MatchFunction func = MatchFunction::Equal;
    QString value0;
    QString value1;
    int count = 0; ///< 0: no counter
    bool isContinuous = false;

    bool hits(int before, int now) const
    {
        switch (func) {
        case MatchFunction::Equal:
        case MatchFunction::NotEqual: {
            bool fits = true;
            for (qsizetype i = 0; i < value0.size(); ++i) {
                const int shift = int(value0.size() - 1 - i);
                const bool was = (before >> shift) & 1;
                const bool is = (now >> shift) & 1;
                const QChar c = value0[i];
                fits = fits && (c == u'X' || (c == u'0' && !is) || (c == u'1' && is) ||
                                (c == u'R' && !was && is) || (c == u'F' && was && !is) ||
                                (c == u'B' && was != is) || (c == u'N' && was == is));
            }
            return fits == (func == MatchFunction::Equal);
        }
        case MatchFunction::Greater:
            return now > value0.toInt(nullptr, 2);
        case MatchFunction::Less:
            return now < value0.toInt(nullptr, 2);
        case MatchFunction::GreaterOrEqual:
            return now >= value0.toInt(nullptr, 2);
        case MatchFunction::LessOrEqual:
            return now <= value0.toInt(nullptr, 2);
        default:
            return (now >= value0.toInt(nullptr, 2) && now <= value1.toInt(nullptr, 2)) ==
                   (func == MatchFunction::InRange);
        }
    }
};

/// What can ever be reported by the units of one port, as sets of units by bit number: every run of
/// values from every value before, until no new state comes up.
std::set<int> reportsOfPort(const std::vector<ModelUnit> &units, int width)
{
    using State = std::vector<int>; // the value before, then how far each unit has counted
    std::set<int> reports;
    std::set<State> seen;
    std::vector<State> left;
    for (int before = 0; before < 1 << width; ++before) {
        left.push_back(State(units.size() + 1, 0));
        left.back()[0] = before;
        seen.insert(left.back());
    }
    while (!left.empty()) {
        const State state = left.back();
        left.pop_back();
        for (int now = 0; now < 1 << width; ++now) {
            State next = state;
            next[0] = now;
            int set = 0;
            for (size_t k = 0; k < units.size(); ++k) {
                const ModelUnit &unit = units[k];
                const bool hit = unit.hits(state[0], now);
                int &counted = next[k + 1];
                if (unit.count > 0)
                    counted = hit                 ? std::min(counted + 1, unit.count)
                              : unit.isContinuous ? 0
                                                  : counted;
                if (unit.count > 0 ? counted == unit.count : hit)
                    set |= 1 << unit.number;
            }
            reports.insert(set);
            if (seen.insert(next).second)
                left.push_back(next);
        }
    }
    return reports;
}

/// An expression and what it means, made side by side.
struct ModelExpression
{
    QString text;
    std::function<bool(int)> isTrue; ///< by the set of units that report
};

ModelExpression randomExpression(const std::function<int(int)> &below, int units, int depth)
{
    const int kind = depth > 0 ? below(6) : 5;
    if (kind == 5) {
        const int unit = below(units);
        return {QStringLiteral("M%1").arg(unit), [=](int set) { return ((set >> unit) & 1) != 0; }};
    }
    const ModelExpression a = randomExpression(below, units, depth - 1);
    if (kind == 4)
        return {QStringLiteral("!(%1)").arg(a.text), [=](int set) { return !a.isTrue(set); }};
    const ModelExpression b = randomExpression(below, units, depth - 1);
    static const QString operators = QStringLiteral("&|^&");
    const QChar o = operators[kind];
    return {QStringLiteral("(%1)%2(%3)").arg(a.text, o, b.text), [=](int set) {
                const bool left = a.isTrue(set);
                const bool right = b.isTrue(set);
                return o == u'&' ? left && right : o == u'|' ? left || right : left != right;
            }};
}

bool has(const QStringList &lines, const QString &pattern)
{
    return lines.indexOf(QRegularExpression(pattern + QStringLiteral(".*"))) >= 0; // matches whole
}

} // namespace

class tst_TriggerCheck : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void tells_data();
    void tells();
    void agreesWithBruteForce();
    void programsTables();
};

void tst_TriggerCheck::tells_data()
{
    using Setup = std::function<void(CoreConfig &)>;
    QTest::addColumn<Setup>("setUp");
    QTest::addColumn<QStringList>("lines");
    using enum MatchFunction;
    const auto row = [](const char *name, const Setup &setUp, const QStringList &lines) {
        QTest::newRow(name) << setUp << lines;
    };
    const auto with = [](MatchFunction func, const QString &value0, const QString &value1 = {}) {
        return [=](CoreConfig &core) {
            useUnit(core, 3, 0, func, value0, value1);
            useExpression(core, QStringLiteral("M3"));
        };
    };
    const QString atOnce = QStringLiteral("exp0 exp0 is true at once, because M3 always matches.");
    const QString never =
        QStringLiteral("exp0! exp0 can never be true, because M3 can never match.");

    row("in order", with(Equal, "01RX"), {});
    row("beyond all values", with(Greater, "1111"),
        {never, "M3! M3 can never match: no value is greater."});
    row("empty range", with(InRange, "0101", "0100"),
        {never, "M3! M3 can never match: the minimum is above the maximum."});
    row("all open", with(Equal, "XXXX"),
        {atOnce, "M3 M3 always matches: every bit of its value is X."});
    row("edges in a row",
        [&](CoreConfig &core) {
            with(Equal, "XXXF")(core);
            core.matchUnits[3]->counter_enable = true;
            core.matchUnits[3]->countinuous = true;
        },
        {never, "M3! M3 can never match: an edge is never at two samples in a row."});
    row("counter beyond its width",
        [&](CoreConfig &core) {
            with(Equal, "0000")(core);
            core.matchUnits[3]->counter_enable = true;
            core.matchUnits[3]->counter = 5;
        },
        {"M3! Core 0: match unit 3 counts 5 matches; 1 to 4 are possible."});
    row("values as a file may have them",
        [&](CoreConfig &core) {
            with(InRange, "001", "1r1111")(core);
            useUnit(core, 4, 1, Equal, "rfR0").match_type = MatchType::Basic;
            useUnit(core, 5, 1, Greater, "0001").match_type = MatchType::Basic;
            useExpression(core, "M4&M5");
        },
        {"M3 M3 has a value of 3 digits for 4 bits; zeros are put in front.",
         "M3 M3 has a value of 6 digits; the first 4 count.",
         "M3 M3 has a value with “r”, which counts as 0.",
         "M4 M4 is of the type Basic, which sees no edges.",
         "M4 M4 has a value with “rf”, which counts as X.",
         "M5 M5 is of the type Basic, which has no >."});
    row("nothing checked",
        [&](CoreConfig &core) {
            with(Equal, "0000")(core);
            core.expressionEnabled[0] = false;
        },
        {"core No expression is checked, so any sample triggers."});
    row("units that aren't there",
        [&](CoreConfig &core) {
            useUnit(core, 1, 0, Equal, "0000");
            useUnit(core, 2, 0, Equal, "0001").trigger = nullptr;
            useExpression(core, "M1|M7");
            useExpression(core, "M2&M16&M1");
            useExpression(core, "M1", false);
        },
        {"exp1! exp1 can never be true: it names M2, which has no trigger port, and M16, which no "
         "core has.",
         "exp0 exp0 triggers otherwise than it reads: it names M7, which is off.",
         "M2 M2 is on but has no trigger port."});
    row("units of the design that are off",
        [&](CoreConfig &core) {
            core.dynamic = 0;
            useUnit(core, 1, 0, Equal, "0000");
            useExpression(core, "M0&M1");
            useExpression(core, "M1|(M7&!M7)");
        },
        {"exp0 When exp0 triggers can't be told for sure: it names M0, which is off."});
    row("unreadable, contradictory, and unused",
        [&](CoreConfig &core) {
            useUnit(core, 0, 0, Equal, "0000");
            useUnit(core, 1, 0, Equal, "000R");
            useUnit(core, 2, 1, Equal, "0000");
            useExpression(core, "M0&&M1");
            useExpression(core, "M0&M1");
            useExpression(core, "M0&!M0");
            useExpression(core, "M1)");
        },
        {"exp0! exp0 can't be read, so it never triggers.",
         "exp1! exp1 can never be true, because its units compare the same port.",
         "exp2! exp2 can never be true, whatever its units do.",
         "exp3 exp3 may trigger otherwise than it reads. A “)” has no “(”.",
         "M2 No checked expression uses M2."});
    row("true together",
        [&](CoreConfig &core) {
            with(Equal, "0000")(core);
            useExpression(core, "!M3");
        },
        {"core One of the checked expressions is true at any time, so the first sample triggers."});
    row("amount",
        [&](CoreConfig &core) {
            with(Equal, "0000")(core);
            core.capture_amount = 100;
        },
        {"amount! 100 samples is no amount that the page offers: until one is chosen there, its "
         "Start captures nothing."});
    row("amount that can't be read",
        [&](CoreConfig &core) {
            with(Equal, "0000")(core);
            core.capture_amount = 1000;
        },
        {"core! Core 0 captures 1000 samples; above 128 only multiples of 128 can be read."});
    row("static",
        [&](CoreConfig &core) {
            core.dynamic = 0;
            useUnit(core, 0, 0, LessOrEqual, "1111");
            useUnit(core, 1, 1, Equal, "0000");
            core.expressions = QStringList{"M0", "M0&&M0"};
        },
        {"exp0 exp0 is true at once, because M0 always matches.",
         "exp1 exp1 can't be read, so it is not checked.",
         "M0 M0 always matches: every value fits.", "M1 No expression uses M1."});
}

void tst_TriggerCheck::tells()
{
    QFETCH(const std::function<void(CoreConfig &)>, setUp);
    CoreConfig core;
    makeCore(core, 4);
    setUp(core);
    QTEST(linesOf(core), "lines");
}

/// Units with and without counters on small ports, shared or not: what is told never and always is
/// so, and without counters nothing that is so stays untold.
void tst_TriggerCheck::agreesWithBruteForce()
{
    std::mt19937 random(13);
    const auto below = [&](int n) { return int(random() % unsigned(n)); };
    int told = 0;
    for (int round = 0; round < 2000; ++round) {
        const int width = 1 + below(3);
        const int units = 1 + below(3);
        const int ports = 1 + below(2);
        const bool hasCounters = below(2) == 1;
        CoreConfig core;
        makeCore(core, width);
        std::vector<std::vector<ModelUnit>> ofPorts(static_cast<size_t>(ports));
        for (int i = 0; i < units; ++i) {
            ModelUnit unit;
            unit.number = i;
            unit.port = below(ports);
            unit.func = below(2) == 1 ? MatchFunction::Equal : MatchFunction(below(8));
            const bool isPattern = isEqualityFunction(unit.func);
            const QString letters = isPattern ? QStringLiteral("01XXRFBN") : QStringLiteral("01");
            for (int bit = 0; bit < width; ++bit) {
                unit.value0 += letters[below(int(letters.size()))];
                unit.value1 += letters[below(int(letters.size()))];
            }
            MatchUnit &record = useUnit(core, i, unit.port, unit.func, unit.value0, unit.value1);
            if (hasCounters && below(2) == 1) {
                unit.count = record.counter = 1 + below(3);
                unit.isContinuous = record.countinuous = below(2) == 1;
                record.counter_enable = true;
            }
            ofPorts[size_t(unit.port)].push_back(unit);
        }
        const ModelExpression expression = randomExpression(below, units, 3);
        useExpression(core, expression.text);

        std::set<int> reports{0};
        for (const std::vector<ModelUnit> &port : ofPorts) {
            std::set<int> all;
            for (const int before : reports) {
                for (const int set : reportsOfPort(port, width))
                    all.insert(before | set);
            }
            reports = all;
        }
        bool canFire = false;
        bool canRest = false;
        for (const int set : reports)
            (expression.isTrue(set) ? canFire : canRest) = true;

        const QStringList lines = linesOf(core);
        const QString what = expression.text + u'\n' + lines.join(u'\n');
        const bool isNever = has(lines, "exp0! exp0 can never be true");
        const bool isAlways = has(lines, "exp0 exp0 is true at once");
        QVERIFY2(!(isNever && canFire) && !(isAlways && canRest), qPrintable(what));
        if (!hasCounters)
            QVERIFY2(isNever != canFire && isAlways != canRest, qPrintable(what));
        told += isNever || isAlways;
        for (const std::vector<ModelUnit> &port : ofPorts) {
            for (const ModelUnit &unit : port) {
                const QString name = QStringLiteral("M%1").arg(unit.number);
                if (!expression.text.contains(name))
                    continue;
                bool canReport = false;
                bool canMiss = false;
                for (const int set : reports)
                    ((set >> unit.number) & 1 ? canReport : canMiss) = true;
                QVERIFY2(has(lines, name + "! M. can never match") != canReport, qPrintable(what));
                if (unit.count < 2)
                    QVERIFY2(has(lines, name + " M. always matches") != canMiss || unit.count == 1,
                             qPrintable(what));
            }
        }
    }
    QVERIFY(told > 300 && told < 1700);
}

/// Units in use have gaps between them, expressions name some of those units.
void tst_TriggerCheck::programsTables()
{
    std::mt19937 random(5);
    const auto below = [&](int n) { return int(random() % unsigned(n)); };
    for (int round = 0; round < 100; ++round) {
        CoreConfig core;
        makeCore(core, 1);
        QList<int> unitOfSlot;
        for (int i = 0; i < CoreConfig::kUnits; ++i) {
            if (below(8) < 1 + round % 8) {
                useUnit(core, i, i, MatchFunction::Equal, "1");
                unitOfSlot.append(i);
            }
        }
        QList<ModelExpression> models;
        for (int row = 0; row < 3; ++row) {
            // Of its units some are not in use: those lines are left out.
            const ModelExpression model = randomExpression(below, CoreConfig::kUnits, 4);
            bool isWhole = true;
            for (int i = 0; i < CoreConfig::kUnits; ++i)
                isWhole &=
                    unitOfSlot.contains(i) || !model.text.contains(QStringLiteral("M%1)").arg(i));
            useExpression(core, model.text, isWhole);
            if (isWhole)
                models.append(model);
        }
        if (models.isEmpty())
            continue;
        const TriggerProgram program = triggerProgram(core);
        QCOMPARE(program.units.size(), unitOfSlot.size());
        for (quint32 input = 0; input < program.inputCount();
             input += 1 + program.inputCount() / 777) {
            int set = 0;
            for (qsizetype slot = 0; slot < unitOfSlot.size(); ++slot)
                set |= int((input >> slot) & 1) << unitOfSlot[slot];
            const bool fires = std::ranges::any_of(
                models, [set](const ModelExpression &model) { return model.isTrue(set); });
            if (program.firesAt(input) != fires)
                QFAIL(qPrintable(
                    QStringLiteral("%1 at %2").arg(core.expressions.join(u' ')).arg(input)));
        }
    }
}

KEO_TEST_MAIN(tst_TriggerCheck)
#include "tst_triggercheck.moc"
