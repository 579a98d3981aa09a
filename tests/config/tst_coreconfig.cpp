#include <config/capturelimits.h>
#include <config/coreconfig.h>
#include <config/litecoreconfig.h>
#include <config/matchtext.h>
#include <config/poweroftwo.h>

#include <support/testmain.h>

#include <functional>
#include <optional>

using namespace KEO;

class tst_CoreConfig : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void registerWidth_data();
    void registerWidth();
    void positionsFollowTheFlatOrder();
    void namesFromATable();
    void numbersOutsideTheTables();
    void windowsRoundUpToAPowerOfTwo();
    void numbersThatCannotBeCaptured_data();
    void numbersThatCannotBeCaptured();
};

namespace {

using Change = std::function<void(CoreConfig &, MatchUnit &)>;

SignalEntry single(const QString &name)
{
    return {name, QString(), {}};
}

/// A bus of \a bits and a single signal.
QList<SignalEntry> busAndSignal(int bits)
{
    SignalEntry bus{"bus", "the bus", {}};
    for (int i = 0; i < bits; ++i)
        bus.members += single(QString("bus[%1]").arg(i));
    return {bus, single("ready")};
}

} // namespace

void tst_CoreConfig::registerWidth_data()
{
    addColumns<int, int, int, bool, int>({"captured", "port", "counter", "enabled", "expected"});
    addRow("nothing", 0, 0, 0, true, 16);
    addRow("15 captured bits and the marker", 15, 2, 16, true, 16);
    addRow("16 captured bits and the marker", 16, 2, 16, true, 17);
    addRow("port of 40", 8, 40, 16, true, 40);
    addRow("counter of 20", 8, 8, 20, true, 20);
    addRow("counter of a unit not in use", 8, 8, 20, false, 16);
    addRow("absurd counter", 8, 8, 10'000'000, true, 1024);
    addRow("negative counter", 8, 8, -5, true, 16);
}

void tst_CoreConfig::registerWidth()
{
    QFETCH(int, captured);
    QFETCH(int, port);
    CoreConfig core;
    if (captured > 0)
        core.signals = busAndSignal(captured - 1);
    if (port > 0)
        core.triggers[5]->signals = busAndSignal(port - 1);
    MatchUnit &unit = *core.matchUnits[15];
    QFETCH(int, counter);
    unit.counter_width = counter;
    unit.counter_enable = true;
    QFETCH(bool, enabled);
    unit.enabled = enabled;
    QTEST(core.requiredRegisterWidth(), "expected");
    unit.enabled = true;
    unit.counter_enable = false; // then the counter's width is of no consequence
    QVERIFY(core.requiredRegisterWidth() <= std::max({16, captured + 1, port}));
}

void tst_CoreConfig::positionsFollowTheFlatOrder()
{
    CoreConfig core;
    core.signals = busAndSignal(2) + busAndSignal(1);
    const QStringList names = core.flatSignalNames();
    QCOMPARE(names.join(u' '), "bus[0] bus[1] ready bus[0] ready");
    QCOMPARE(signalBits(core.signals), names.size());
    for (int i = 0; i < names.size(); ++i)
        QCOMPARE(core.signalAtPosition(i).name, names[i]);
    QCOMPARE(core.signalAtPosition(int(names.size())), SignalEntry());
    QCOMPARE(core.signalAtPosition(-1), SignalEntry());
}

void tst_CoreConfig::namesFromATable()
{
    CoreConfig core;
    core.signals = busAndSignal(2);
    const QList<SignalEntry> before = core.signals;
    const SignalNames a{"a", "A"};

    QVERIFY(!core.applySignalNames({{0, a}, {1, a}, {2, a}, {3, a}}));
    QVERIFY(!core.applySignalNames({{0, a}, {1, a}}));
    QCOMPARE(core.signals, before);

    QVERIFY(core.applySignalNames({{0, a}, {2, {"r", QString()}}, {7, a}}));
    QCOMPARE(core.signals[0].name, "bus"); // a bus keeps its own names
    QCOMPARE(core.signals[0].text, "the bus");
    QCOMPARE(core.signals[0].members, (QList<SignalEntry>{{a.name, a.text, {}}, {}}));
    QCOMPARE(core.signals[1], single("r"));
}

void tst_CoreConfig::numbersOutsideTheTables()
{
    CoreConfig core;
    core.expressions = QStringList{"M0"};
    for (int number : {-1, 16}) {
        QVERIFY(functionsForMatchType(number).isEmpty());
        QVERIFY(matchTypeText(number).isEmpty());
        QVERIFY(matchFunctionText(number).isEmpty());
        QCOMPARE(core.triggerByIndex(number), nullptr);
        QCOMPARE(core.matchUnitByIndex(number), nullptr);
        core.setExpression("M1", number);
    }
    QCOMPARE(core.expressions, QStringList{"M0"});
    QCOMPARE(functionsForMatchType(3), (QList<int>{0, 1, 2, 3, 4, 5}));
}

void tst_CoreConfig::windowsRoundUpToAPowerOfTwo()
{
    for (const auto &[n, power] : {std::pair(-1, 0LL),
                                   {0, 0},
                                   {1, 1},
                                   {2, 2},
                                   {3, 4},
                                   {5, 8},
                                   {1025, 2048},
                                   {2'147'483'647, 2'147'483'648}})
        QCOMPARE(roundUpToPowerOfTwo(n), power);
}

void tst_CoreConfig::numbersThatCannotBeCaptured_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("words"); // of the refusal; empty: can be captured
    const auto row = [](const char *name, const QString &words, const Change &change) {
        QTest::newRow(name) << change << words;
    };
    row("as it is", "", [](CoreConfig &, MatchUnit &) {});
    row("the last core", "", [](CoreConfig &core, MatchUnit &) { core.index = 15; });
    row("one core more", "16", [](CoreConfig &core, MatchUnit &) { core.index = 16; });
    row("no sample", "nothing", [](CoreConfig &core, MatchUnit &) { core.capture_amount = 0; });
    row("no window", "nothing", [](CoreConfig &core, MatchUnit &) { core.window_num = -1; });
    row("no signal", "nothing", [](CoreConfig &core, MatchUnit &) { core.signals = {}; });
    row("half a block", "192", [](CoreConfig &core, MatchUnit &) { core.capture_amount = 192; });
    row("more than the memory", "2048",
        [](CoreConfig &core, MatchUnit &) { core.capture_amount = 2048; });
    row("windows that fill the memory", "",
        [](CoreConfig &core, MatchUnit &) { core.window_num = 4, core.capture_amount = 256; });
    row("a fifth window", "256",
        [](CoreConfig &core, MatchUnit &) { core.window_num = 5, core.capture_amount = 256; });
    row("memory beyond the addresses", "131072",
        [](CoreConfig &core, MatchUnit &) { core.storage_depth = 131072; });
    row("trigger as late as can be", "",
        [](CoreConfig &core, MatchUnit &) { core.trigger_pos = 1015; });
    row("trigger later", "1016", [](CoreConfig &core, MatchUnit &) { core.trigger_pos = 1016; });
    row("trigger behind the end", "2000",
        [](CoreConfig &core, MatchUnit &) { core.trigger_pos = 2000; });
    row("trigger before all", "-1", [](CoreConfig &core, MatchUnit &) { core.trigger_pos = -1; });
    row("count that fits", "", [](CoreConfig &, MatchUnit &unit) { unit.counter = 16; });
    row("count too large", "17", [](CoreConfig &, MatchUnit &unit) { unit.counter = 17; });
    row("count of none", " 0 ", [](CoreConfig &, MatchUnit &unit) { unit.counter = 0; });
    row("counter too wide", "17", [](CoreConfig &, MatchUnit &unit) { unit.counter_width = 17; });
    row("count of a unit not in use", "",
        [](CoreConfig &, MatchUnit &unit) { unit.counter = 17, unit.enabled = false; });
}

void tst_CoreConfig::numbersThatCannotBeCaptured()
{
    QFETCH(Change, change);
    CoreConfig core;
    core.signals = busAndSignal(2);
    core.triggers[1]->signals = busAndSignal(2);
    MatchUnit &unit = *core.matchUnits[3];
    unit.enabled = unit.counter_enable = true;
    unit.trigger = core.triggers[1].get();
    unit.counter_width = 4;
    change(core, unit);
    QFETCH(QString, words);
    const std::optional<Error> obstacle = captureObstacle(core);
    QCOMPARE(obstacle.has_value(), !words.isEmpty());
    QVERIFY2(!obstacle || obstacle->message.contains(words), qPrintable(obstacle->message));

    LiteCoreConfig lite;
    lite.signals = busAndSignal(2);
    for (const auto &[amount, isPossible] :
         {std::pair(0, false), {1, true}, {65'536, true}, {65'537, false}}) {
        lite.capture_amount = amount;
        QCOMPARE(!captureObstacle(lite).has_value(), isPossible);
    }
}

KEO_TEST_MAIN(tst_CoreConfig)
#include "tst_coreconfig.moc"
