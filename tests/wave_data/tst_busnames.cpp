#include <support/testmain.h>
#include <wave_data/busnames.h>

class tst_BusNames : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void defaultName_data();
    void defaultName();
    void groupName_data();
    void groupName();
};

void tst_BusNames::defaultName_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QString>("expected");
    QTest::newRow("falling") << QStringList{"d[2]", "d[1]", "d[0]"} << "d[2:0]";
    QTest::newRow("rising") << QStringList{"d[9]", "d[10]"} << "d[9:10]";
    QTest::newRow("two brackets") << QStringList{"m[3][1]", "m[3][0]"} << "m[3][1:0]";
    QTest::newRow("line end in the base") << QStringList{"a\nb[1]", "a\nb[0]"} << "a\nb[1:0]";
    QTest::newRow("beyond 32 bits")
        << QStringList{"a[4294967296]", "a[4294967297]"} << "a[4294967296:4294967297]";
    QTest::newRow("beyond 64 bits")
        << QStringList{"a[99999999999999999999]", "a[99999999999999999998]"} << "";
    QTest::newRow("gap") << QStringList{"a[1]", "a[2]", "a[4]"} << "";
    QTest::newRow("step of two throughout") << QStringList{"a[0]", "a[2]", "a[4]"} << "";
    QTest::newRow("turns round") << QStringList{"a[1]", "a[2]", "a[1]"} << "";
    QTest::newRow("same twice") << QStringList{"a[1]", "a[1]"} << "";
    QTest::newRow("other base") << QStringList{"a[2]", "b[1]"} << "";
    QTest::newRow("other case") << QStringList{"a[2]", "A[1]"} << "";
    QTest::newRow("no index") << QStringList{"x", "x[1]"} << "";
    QTest::newRow("leading zero") << QStringList{"a[01]", "a[00]"} << "";
    QTest::newRow("no base") << QStringList{"[1]", "[0]"} << "";
    QTest::newRow("text behind") << QStringList{"a[1]\n", "a[0]\n"} << "";
    QTest::newRow("only one") << QStringList{"a[1]"} << "";
    QTest::newRow("none") << QStringList() << "";
}

void tst_BusNames::defaultName()
{
    QFETCH(QStringList, names);
    QTEST(WaveMonitor::defaultBusName(names), "expected");
}

void tst_BusNames::groupName_data()
{
    QTest::addColumn<QStringList>("buses");
    QTest::addColumn<QString>("expected");
    QTest::newRow("none") << QStringList() << "group_0[3:0]";
    QTest::newRow("gap") << QStringList{"group_0[3:0]", "group_2[1:0]"} << "group_1[3:0]";
    QTest::newRow("unordered, doubled")
        << QStringList{"group_1[0:0]", "group_0[1:0]", "group_1[3:0]"} << "group_2[3:0]";
    QTest::newRow("other names do not count")
        << QStringList{"group_00[3:0]", "group_0", "my group_0[1:0]", "group_0[01:0]", "data[7:0]"}
        << "group_0[3:0]";
}

void tst_BusNames::groupName()
{
    QFETCH(QStringList, buses);
    QTEST(WaveMonitor::groupBusName(buses, 4), "expected");
}

KEO_TEST_MAIN(tst_BusNames)
#include "tst_busnames.moc"
