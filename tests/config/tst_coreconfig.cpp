#include <config/coreconfig.h>
#include <config/matchtext.h>
#include <config/poweroftwo.h>

#include <support/testmain.h>

#include <limits>

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
    SignalEntry bus{QStringLiteral("bus"), QStringLiteral("the bus"), {}};
    for (int i = 0; i < bits; ++i)
        bus.members += single(QStringLiteral("bus[%1]").arg(i));
    return {bus, single(QStringLiteral("ready"))};
}

} // namespace

void tst_CoreConfig::registerWidth_data()
{
    QTest::addColumn<int>("captured"); // bits
    QTest::addColumn<int>("port");     // bits
    QTest::addColumn<int>("counter");  // bits
    QTest::addColumn<bool>("unitEnabled");
    QTest::addColumn<int>("expected");
    QTest::newRow("nothing") << 0 << 0 << 0 << true << 16;
    QTest::newRow("15 captured bits and the marker") << 15 << 2 << 16 << true << 16;
    QTest::newRow("16 captured bits and the marker") << 16 << 2 << 16 << true << 17;
    QTest::newRow("port of 40") << 8 << 40 << 16 << true << 40;
    QTest::newRow("counter of 20") << 8 << 8 << 20 << true << 20;
    QTest::newRow("counter of a unit not in use") << 8 << 8 << 20 << false << 16;
    QTest::newRow("absurd counter") << 8 << 8 << 10'000'000 << true << 1024;
    QTest::newRow("negative counter") << 8 << 8 << -5 << true << 16;
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
    QFETCH(bool, unitEnabled);
    unit.enabled = unitEnabled;
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
    QCOMPARE(names.join(u' '), QStringLiteral("bus[0] bus[1] ready bus[0] ready"));
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
    const SignalNames a{QStringLiteral("a"), QStringLiteral("A")};

    QVERIFY(!core.applySignalNames({{0, a}, {1, a}, {2, a}, {3, a}}));
    QVERIFY(!core.applySignalNames({{0, a}, {1, a}}));
    QCOMPARE(core.signals, before);

    QVERIFY(core.applySignalNames({{0, a}, {2, {QStringLiteral("r"), QString()}}, {7, a}}));
    QCOMPARE(core.signals[0].name, QStringLiteral("bus")); // a bus keeps its own names
    QCOMPARE(core.signals[0].text, QStringLiteral("the bus"));
    QCOMPARE(core.signals[0].members, (QList<SignalEntry>{{a.name, a.text, {}}, {}}));
    QCOMPARE(core.signals[1], single(QStringLiteral("r")));
}

void tst_CoreConfig::numbersOutsideTheTables()
{
    CoreConfig core;
    core.expressions = QStringList{QStringLiteral("M0")};
    for (int number : {-1, 16}) {
        QVERIFY(functionsForMatchType(number).isEmpty());
        QVERIFY(matchTypeText(number).isEmpty());
        QVERIFY(matchFunctionText(number).isEmpty());
        QCOMPARE(core.triggerByIndex(number), nullptr);
        QCOMPARE(core.matchUnitByIndex(number), nullptr);
        core.setExpression(QStringLiteral("M1"), number);
    }
    QCOMPARE(core.expressions, QStringList{QStringLiteral("M0")});
    QCOMPARE(functionsForMatchType(3), (QList<int>{0, 1, 2, 3, 4, 5}));
}

void tst_CoreConfig::windowsRoundUpToAPowerOfTwo()
{
    const QList<QPair<int, qint64>> powers = {
        {-1, 0}, {0, 0},       {1, 1},
        {2, 2},  {3, 4},       {4, 4},
        {5, 8},  {1025, 2048}, {std::numeric_limits<int>::max(), 2'147'483'648}};
    for (const auto &[n, power] : powers)
        QCOMPARE(roundUpToPowerOfTwo(n), power);
}

KEO_TEST_MAIN(tst_CoreConfig)
#include "tst_coreconfig.moc"
