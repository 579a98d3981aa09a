#include <config/versioncompare.h>

#include <support/testmain.h>

using namespace KEO;

class tst_VersionCompare : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void order_data();
    void order();
};

void tst_VersionCompare::order_data()
{
    constexpr int kThrows = 0;
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<int>("expected");
    const auto row = [](const char *a, const char *b, int expected) {
        QTest::addRow("'%s' and '%s'", a, b) << QString(a) << QString(b) << expected;
    };
    row("3", "3.0", EqualVersion);
    row("3.0.0", "3.0", EqualVersion);
    row("2.10", "2.9", HigherVersion);
    row("3.0.1", "3.0", HigherVersion);
    row("3.0", "3.0.1", LowerVersion);
    row("", "2.0", LowerVersion);
    row("", "", EqualVersion);
    row(".3..0.", "3.0", EqualVersion);
    row("-1", "0", LowerVersion);
    row("3.x", "3.0", kThrows);
    row("3.x", "2.0", HigherVersion);
    row("3.0", "3.0.x", kThrows);
    row("0x2", "2", kThrows);
    row("99999999999", "2", kThrows);
}

void tst_VersionCompare::order()
{
    QFETCH(QString, a);
    QFETCH(QString, b);
    QFETCH(int, expected);
    try {
        QCOMPARE(int(compareVersions(a, b)), expected);
    } catch (const CompareException &exception) {
        QCOMPARE(expected, 0);
        QCOMPARE(exception.message(), QStringLiteral("Invalid Keo config file."));
    }
}

KEO_TEST_MAIN(tst_VersionCompare)
#include "tst_versioncompare.moc"
