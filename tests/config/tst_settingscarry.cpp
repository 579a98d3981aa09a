// Settings that go from one build of a design to the next.

#include "coretext.h"
#include "rebuiltdesign.h"

#include <config/settingscarry.h>
#include <config/standardconfig.h>

#include <support/testmain.h>

#include <map>

using namespace KEO;

class tst_SettingsCarry : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void ontoItself();
    void eachSettingOnce();
    void comparisons_data();
    void comparisons();
    void numbers_data();
    void numbers();
    void coresAreFoundAgain();
};

namespace {

constexpr int kSeeds = 300;

/// What a file has, and what it has not.
QStringList wholeText(const CoreList &cores)
{
    QStringList text{saveStandardConfig(cores)};
    for (const auto &core : cores) {
        text.append(coretext::line("run", core->active));
        for (const bool flag : core->dynamic ? core->expressionEnabled : QList<bool>())
            text.append(coretext::line("flag", int(flag)));
    }
    return text;
}

const QString kNone = QStringLiteral("-");

/// The settings of a core by the names that the account has for them; at its default, `kNone`.
using Settings = std::map<QString, QString>;

Settings settingsOf(const CoreConfig &core, bool runsByDefault)
{
    Settings all;
    const auto put = [&](const QString &name, const QString &value, bool isDefault) {
        all[name] = isDefault ? kNone : value;
    };
    const auto number = [&](const char *name, int value, int standard) {
        put(QLatin1String(name), QString::number(value), value == standard);
    };
    number("Windows", core.window_num, 1);
    number("Capture amount", core.capture_amount, 1024);
    number("Trigger position", core.trigger_pos, 0);
    number("Check mark", core.active != 0, runsByDefault);
    for (const MatchUnit *unit : core.enabledUnits()) {
        const QString name = QStringLiteral("M%1 ").arg(unit->index);
        const bool isRange = int(unit->func) >= 6;
        const QString values = isRange ? unit->value0 + ".." + unit->value1 : unit->value0;
        put(name + "comparison", matchFunctionText(unit->func) + ' ' + values,
            int(unit->func) == 0 && unit->value0.count('X') == unit->value0.size());
        if (unit->counter_enable)
            put(name + "count",
                QString::number(unit->counter) + (unit->countinuous ? " continuous" : ""),
                unit->counter == 2 && !unit->countinuous);
    }
    for (int row = 0; row < core.expressions.size(); ++row) {
        put(QStringLiteral("Expression %1").arg(row), core.expressions[row], false);
        put(QStringLiteral("Check mark of expression %1").arg(row), "off",
            core.expressionEnabled.value(row, true));
    }
    const QStringList texts = flatSignalTexts(core.signals);
    for (int bit = 0; bit < texts.size(); ++bit)
        put("Name of " + core.flatSignalNames()[bit], texts[bit], texts[bit].isEmpty());
    return all;
}

const CoreConfig *coreOf(const CoreList &cores, int index)
{
    const auto found = std::ranges::find(cores, index, [](auto &core) { return core->index; });
    return found == cores.end() ? nullptr : found->get();
}

} // namespace

void tst_SettingsCarry::ontoItself()
{
    for (int seed = 0; seed < kSeeds; ++seed) {
        QRandomGenerator random(seed);
        const CoreList loaded = rebuilt::randomDesign(random, 1 + random.bounded(3));
        const CoreList user = rebuilt::copyOf(loaded);
        QCOMPARE(wholeText(user), wholeText(loaded));
        if (seed % 8)
            rebuilt::setUpRandomly(user, random);
        CoreList now = loadStandardConfig(saveStandardConfig(loaded));
        now.front()->active = 1;
        const CarriedSettings account = carrySettings(user, now).account;
        QCOMPARE(wholeText(now), wholeText(user));
        for (const CarriedSetting &entry : account)
            QCOMPARE(entry.outcome, CarryOutcome::Kept);
    }
}

/// Against the settings of the three records themselves.
void tst_SettingsCarry::eachSettingOnce()
{
    QMap<CarryOutcome, int> outcomes;
    for (int seed = 0; seed < kSeeds; ++seed) {
        QRandomGenerator random(seed);
        const CoreList user = rebuilt::randomDesign(random, 1 + random.bounded(3));
        CoreList brought = rebuilt::copyOf(user);
        rebuilt::setUpRandomly(user, random);
        rebuilt::rebuildRandomly(brought, random);
        const CoreList now = rebuilt::copyOf(brought);
        CarriedSettings account = carrySettings(user, now).account;

        for (const auto &core : user) {
            const bool isFirst = core == user.front();
            const CoreConfig *source = coreOf(brought, core->index);
            const CoreConfig *target = coreOf(now, core->index);
            const QString place = QStringLiteral("Core %1").arg(core->index);
            Settings fresh = source ? settingsOf(*source, isFirst) : Settings();
            Settings is = target ? settingsOf(*target, isFirst) : Settings();
            for (const auto &[name, value] : settingsOf(*core, isFirst)) {
                if (!core->dynamic && name.contains("xpression"))
                    continue; // the design's
                const QByteArray where =
                    QStringLiteral("seed %1, %2: %3").arg(seed).arg(place, name).toUtf8();
                const bool isTold =
                    value != kNone || (fresh.contains(name) && fresh[name] != value);
                const auto entry = std::ranges::find_if(account, [&](const CarriedSetting &each) {
                    return each.place == place && each.setting == name;
                });
                QVERIFY2((entry != account.end()) == isTold, where);
                if (!isTold)
                    continue;
                const CarryOutcome outcome = entry->outcome;
                QVERIFY2(entry->reason.isEmpty() == (outcome == CarryOutcome::Kept), where);
                if (outcome == CarryOutcome::Lost)
                    QVERIFY2(is[name] == fresh[name], where);
                else
                    QVERIFY2((is[name] == value) == (outcome == CarryOutcome::Kept), where);
                ++outcomes[outcome];
                account.erase(entry);
            }
            // What is new must not change the trigger.
            for (qsizetype row = core->expressions.size();
                 target && core->dynamic && target->dynamic && row < target->expressions.size();
                 ++row)
                QVERIFY(!target->expressionEnabled[row]);
        }
        account.removeIf([](const CarriedSetting &entry) {
            return entry.before.isEmpty() && entry.setting.startsWith("Check mark");
        });
        QVERIFY2(account.isEmpty(), qPrintable(account.isEmpty() ? "" : account[0].setting));
    }
    for (const CarryOutcome outcome :
         {CarryOutcome::Kept, CarryOutcome::Adapted, CarryOutcome::Lost})
        QVERIFY(outcomes[outcome] > kSeeds);
}

void tst_SettingsCarry::comparisons_data()
{
    addColumns<QString, int, QString, QString, int, QString, QString>(
        {"ports", "type", "old", "brought", "newType", "is", "reason"});
    const int edges = int(MatchType::BasicWithEdges);
    const int range = int(MatchType::Range);
    addRow("bits go with their signals", "abc cxab", edges, "== R01", "== XXXX", edges, "== 1XR0",
           "Each bit went with its signal; new signals are not compared.");
    addRow("a short value is a number", "abc acb", edges, "!= 1", "== XXX", edges, "!= 010",
           "Each bit went with its signal; new signals are not compared.");
    addRow("a signal is gone", "abc ca", edges, "== R1X", "== 00", edges, "== XR",
           "No longer on its port: b.");
    addRow("all that it compared is gone", "abc cd", edges, "== R1X", "== 00", edges, "== 00",
           "No longer on its port: a, b.");
    addRow("twins", "aab baa", edges, "== 01X", "== XXX", edges, "== X01",
           "Each bit went with its signal; new signals are not compared.");
    addRow("no edges any more", "ab ab", edges, "== R1", "== XX", 0, "== X1",
           "The new match type, Basic, sees no edges: a.");
    addRow("no such function", "ab ab", range, "in range 01..10", "== XX", 0, "== XX",
           "The new match type, Basic, has no in range.");
    addRow("a number on the same port", "ab ab", range, "> 01", "== XX", int(MatchType::Extended),
           "> 01", "");
    addRow("a number on another order", "ab ba", range, "> 01", "== XX", range, "== XX",
           "Its port has other signals, or in another order: the number would mean something "
           "else.");
}

void tst_SettingsCarry::comparisons()
{
    QFETCH(QString, ports);
    QFETCH(int, type);
    QFETCH(QString, old);
    QFETCH(QString, brought);
    QFETCH(int, newType);
    QFETCH(QString, is);
    QFETCH(QString, reason);
    const auto make = [](const QString &port, int matchType, const QString &comparison) {
        auto core = std::make_unique<CoreConfig>();
        for (const QChar name : port)
            core->triggers[2]->signals.append({name, {}, {}});
        core->active = 1;
        MatchUnit &unit = *core->matchUnits[5];
        unit.enabled = true;
        unit.trigger = core->triggers[2].get();
        unit.match_type = MatchType(matchType);
        while (matchFunctionText(unit.func) != comparison.section(' ', 0, -2))
            unit.func = MatchFunction(int(unit.func) + 1);
        unit.value0 = comparison.section(' ', -1).section("..", 0, 0);
        unit.value1 = comparison.section(' ', -1).section("..", 1, 1);
        CoreList cores;
        cores.push_back(std::move(core));
        return cores;
    };
    const CoreList now = make(ports.section(' ', 1, 1), newType, brought);
    const CarriedSettings account =
        carrySettings(make(ports.section(' ', 0, 0), type, old), now).account;
    QCOMPARE(account.size(), 1);
    QCOMPARE(account[0].setting, "M5 comparison");
    QCOMPARE(account[0].before, old);
    QCOMPARE(account[0].after, is);
    QCOMPARE(account[0].reason, reason);
    QCOMPARE(coreText(now), coreText(make(ports.section(' ', 1, 1), newType, is)));
}

void tst_SettingsCarry::numbers_data()
{
    addColumns<QList<int>, int, QList<int>>({"asked", "depth", "held"});
    addRow("as they are", QList{4, 256, 100}, 1024, QList{4, 256, 100});
    addRow("no power of two", QList{2, 384, 100}, 1024, QList{2, 384, 100});
    addRow("a smaller amount", QList{4, 256, 200}, 512, QList{4, 128, 119});
    addRow("fewer windows", QList{8, 32, 5}, 100, QList{2, 32, 5});
    addRow("no room", QList{8, 128, 5}, 16, QList{1, 64, 3});
    addRow("nothing chosen", QList{0, 0, 5}, 256, QList{1, 64, 5});
}

void tst_SettingsCarry::numbers()
{
    QFETCH(QList<int>, asked);
    QFETCH(int, depth);
    QFETCH(QList<int>, held);
    CoreList before;
    CoreList now;
    for (CoreList *cores : {&before, &now}) {
        cores->push_back(std::make_unique<CoreConfig>());
        cores->front()->signals = {{"a", {}, {}}};
    }
    before[0]->window_num = asked[0];
    before[0]->capture_amount = asked[1];
    before[0]->trigger_pos = asked[2];
    now[0]->storage_depth = depth;
    now[0]->window_num = 1;
    now[0]->capture_amount = 64;
    now[0]->trigger_pos = 3;
    carrySettings(before, now);
    QCOMPARE((QList{now[0]->window_num, now[0]->capture_amount, now[0]->trigger_pos}), held);
}

/// Cores by index, module and clock; each with a number of windows of its own.
void tst_SettingsCarry::coresAreFoundAgain()
{
    struct Row
    {
        QStringList before;
        QStringList now;
        QList<int> windows;
    };
    for (const Row &row : {Row{{"0 a x", "1 a x"}, {"1 a x", "0 a x"}, {3, 2}},
                           Row{{"0 a x", "1 b x"}, {"0 b x", "1 a x"}, {3, 2}}, // changed places
                           Row{{"0 a x", "1 b x"}, {"0 b x"}, {3}},             // moved up
                           Row{{"0 a x", "1 b x"}, {"0 c x", "1 b y"}, {2, 3}}, // new names
                           Row{{"0 a x", "1 b x"}, {"4 a x", "5 a x"}, {1, 1}}, // which one?
                           Row{{"0 a x", "1 a x"}, {"4 a x"}, {1}}}) {
        const auto make = [](const QStringList &texts) {
            CoreList cores;
            for (const QString &text : texts) {
                auto core = std::make_unique<CoreConfig>(text.section(' ', 0, 0).toInt());
                core->module_name = text.section(' ', 1, 1);
                core->sample_clock = text.section(' ', 2, 2);
                core->signals = {{"a", {}, {}}};
                core->capture_amount = 32;
                cores.push_back(std::move(core));
            }
            return cores;
        };
        const CoreList before = make(row.before);
        before[0]->window_num = 2;
        before[1]->window_num = 3;
        const CoreList now = make(row.now);
        const SettingsCarry carry = carrySettings(before, now);
        QList<int> windows;
        for (const auto &core : now)
            windows.append(core->window_num);
        QCOMPARE(windows, row.windows);
        for (const auto &core : before) {
            const bool isFound = carry.cores.contains(core->index);
            const int windowsNow = isFound ? coreOf(now, carry.cores[core->index])->window_num : 0;
            QCOMPARE(windowsNow, isFound ? core->window_num : 0);
        }
    }
}

KEO_TEST_MAIN(tst_SettingsCarry)
#include "tst_settingscarry.moc"
