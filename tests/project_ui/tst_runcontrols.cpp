// Which control is enabled when, over the whole table of situations.

#include <project/runcontrols.h>
#include <support/testmain.h>

#include <config/coreconfig.h>

using namespace KEO;

class tst_RunControls : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void situations_data();
    void situations();
    void coresOfAnAutoRun();
};

void tst_RunControls::situations_data()
{
    QTest::addColumn<RunSituation>("situation");
    QTest::addColumn<QString>("enabled");

    // Open, Start, Auto, stop X, Force trigger, saVe, settings P
    QTest::newRow("no core selected") << RunSituation{false, false, false, -1, false} << "O-----P";
    QTest::newRow("several cores") << RunSituation{false, true, false, -1, false} << "OS----P";
    QTest::newRow("one core") << RunSituation{false, true, true, -1, false} << "OSA---P";
    QTest::newRow("one core, waves") << RunSituation{false, true, true, -1, true} << "OSA--VP";
    QTest::newRow("waves, nothing selected")
        << RunSituation{false, false, false, -1, true} << "O----VP";
    QTest::newRow("single run") << RunSituation{true, true, true, -1, false} << "---XF--";
    QTest::newRow("single run, first window")
        << RunSituation{true, true, true, -1, true} << "---XF--";
    QTest::newRow("auto run, first round") << RunSituation{true, true, true, 0, false} << "---X---";
    QTest::newRow("auto run, later round") << RunSituation{true, true, true, 5, true} << "---X---";
}

void tst_RunControls::situations()
{
    QFETCH(RunSituation, situation);
    const RunControls controls = runControls(situation);
    QString enabled;
    const auto add = [&](char letter, bool isOn) { enabled += QLatin1Char(isOn ? letter : '-'); };
    add('O', controls.open);
    add('S', controls.start);
    add('A', controls.autoRun);
    add('X', controls.stop);
    add('F', controls.forceTrigger);
    add('V', controls.save);
    add('P', controls.settings);
    QTEST(enabled, "enabled");
}

void tst_RunControls::coresOfAnAutoRun()
{
    CoreConfig one(0);
    CoreConfig two(1);
    QVERIFY(!suitsAuto({}));
    QVERIFY(suitsAuto({&one}));
    QVERIFY(!suitsAuto({&one, &two}));
    two.window_num = 2;
    QVERIFY(!suitsAuto({&two}));
}

KEO_TEST_MAIN(tst_RunControls)
#include "tst_runcontrols.moc"
