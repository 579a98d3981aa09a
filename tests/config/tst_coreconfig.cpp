#include <config/coreconfig.h>
#include <config/matchtype.h>
#include <config/poweroftwo.h>

#include <support/testmain.h>

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
};

namespace {

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
        QVERIFY(functionsForMatchType(MatchType(number)).isEmpty());
        QVERIFY(matchTypeText(MatchType(number)).isEmpty());
        QVERIFY(matchFunctionText(MatchFunction(number)).isEmpty());
        QCOMPARE(core.triggerByIndex(number), nullptr);
        QCOMPARE(core.matchUnitByIndex(number), nullptr);
        core.setExpression("M1", number);
    }
    QCOMPARE(core.expressions, QStringList{"M0"});
    using enum MatchFunction;
    QCOMPARE(functionsForMatchType(MatchType::ExtendedWithEdges),
             (QList{Equal, NotEqual, Greater, Less, GreaterOrEqual, LessOrEqual}));
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

KEO_TEST_MAIN(tst_CoreConfig)
#include "tst_coreconfig.moc"
