// A server that answers nonsense instead of frames.

#include "desktop.h"

using namespace KEO;

class tst_DesktopNonsense : public ViewerTest
{
    Q_OBJECT

private Q_SLOTS:
    void nonsenseFromTheServer_data();
    void nonsenseFromTheServer();
};

void tst_DesktopNonsense::nonsenseFromTheServer_data()
{
    QTest::addColumn<QString>("at");
    QTest::addColumn<QString>("kind");
    for (const char *at : {"OPEN", "READ_START_REG", "READ_RAM"}) {
        for (const char *kind :
             {"wrong length", "huge length", "unknown type", "huge count", "deep nesting", "empty"})
            QTest::addRow("%s at %s", kind, at) << at << kind;
    }
}

// The run goes on or waits; Stop and a new window on a new server find everything as before.
void tst_DesktopNonsense::nonsenseFromTheServer()
{
    QFETCH(QString, at);
    QFETCH(QString, kind);
    TestDesign design;
    design.amount = 32;
    design.faults =
        QStringLiteral(R"([{ "at": "%1", "nth": "every", "do": "garbage", "kind": "%2" }])")
            .arg(at, kind);
    Desktop d(design);
    d.open();
    d.press(Qt::Key_F1);
    QVERIFY(d.isBusy());
    QTRY_VERIFY_WITH_TIMEOUT(d.requests("READ_START_REG") > 0, Desktop::kCaptureTime);
    QTest::qWait(200); // or as long as the run takes, if it goes on
    if (d.isBusy())
        d.press(Qt::Key_F4);
    QVERIFY(!d.isBusy() && !Desktop::tip());
    QVERIFY(d.tool("Start")->isEnabled() && d.tool("Open...")->isEnabled());
    for (int tab = 1; tab < d.tabs()->count(); ++tab) {
        const auto elements = d.wave(tab)->signalMap();
        const qint64 trigger = design.firstTrigger(design.position);
        for (int sample = 0; sample < design.amount; ++sample)
            QCOMPARE(elements[15].data.testBit(sample),
                     design.level(15, trigger - design.position + sample));
    }
    d.window->close();
    QVERIFY(!d.window->isVisible());
}

int main(int argc, char **argv)
{
    return runTest<tst_DesktopNonsense, QApplication>(argc, argv);
}
#include "tst_desktopnonsense.moc"
