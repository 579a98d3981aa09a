#include <shell/startupoptions.h>
#include <support/testmain.h>

using namespace KEO;

Q_DECLARE_METATYPE(StartupOptions)

class tst_StartupOptions : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void options_data();
    void options();
    void debugCountsEverywhere();
};

void tst_StartupOptions::options_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<StartupOptions>("expected");

    QTest::newRow("everything, in any order")
        << "-fs d.fs -device KR-C -keo a.keo -family KR -dir /waves"
        << StartupOptions{"a.keo", "/waves", "KR", "KR-C", "d.fs"};
    QTest::newRow("the last mention counts")
        << "-keo a.keo -keo b.keo" << StartupOptions{"b.keo", "", "", "", ""};
    QTest::newRow("nothing behind the last")
        << "-device KR-C -family" << StartupOptions{"", "", "", "KR-C", ""};
    QTest::newRow("no value swallows nothing")
        << "-keo -family KR" << StartupOptions{"-family", "", "KR", "", ""};
    QTest::newRow("unknown words are passed over")
        << "x -Keo a.keo -FS b --family KR -debug -device KR-C y"
        << StartupOptions{"", "", "", "KR-C", ""};
}

void tst_StartupOptions::options()
{
    QFETCH(QString, line);
    QTEST(parseStartupOptions(QStringList{"-keo"} + line.split(' ', Qt::SkipEmptyParts)),
          "expected"); // the program's name never counts, whatever it is
}

void tst_StartupOptions::debugCountsEverywhere()
{
    QVERIFY(wantsDebugMessages({"signalscope", "-debug"}));
    QVERIFY(wantsDebugMessages({"signalscope", "-keo", "-debug"}));
    QVERIFY(!wantsDebugMessages({"signalscope", "-Debug", "--debug"}));
}

KEO_TEST_MAIN(tst_StartupOptions)
#include "tst_startupoptions.moc"
