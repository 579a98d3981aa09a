// Projects in the main window, driven by keys and clicks, with a simulated board behind them.

#include <export_ui/exportdialog.h>
#include <programmer_ui/keoprogrammerwidget.h>
#include <support/desktop.h>
#include <support/files.h>
#include <trigger_ui/dynamicconfigwidget.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QDockWidget>
#include <QSpinBox>
#include <QTextEdit>

using namespace KEO;

class tst_StandardProject : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void bothKindsInTurn();
    void coreSelection();
    void oddAmountOutlivesAClick();
    void windowsOfACore();
    void keysReachAWaitingRun_data();
    void keysReachAWaitingRun();
    void newBitstreamDuringARun();
    void errors_data();
    void errors();
};

// One after the other: the window holds what belongs to the open
// project and nothing else, and does not grow.
void tst_StandardProject::bothKindsInTurn()
{
    Desktop d({});
    TestDesign lite;
    lite.lite = true;
    const QString folder = d.directory.filePath("lite");
    QVERIFY(QDir().mkdir(folder));
    lite.write(folder);
    qsizetype objects = 0;
    for (int round = 0; round < 3; ++round) {
        for (const bool isLite : {false, true}) {
            d.open(isLite ? folder + "/design.keo" : d.file());
            QCOMPARE(
                d.toolTexts(),
                (QStringList{"Open...", "-", "", "-", "", "Start", "Auto", "Force Trigger", "Stop",
                             "-", "Zoom In", "Zoom Out", "Zoom Fit", "-", "Save...", "Export"}));
            QCOMPARE(d.titles(), QStringList(isLite ? "Trigger" : "Configuration"));
            QCOMPARE(d.enabled().left(7), "OSA----");
            QCOMPARE(d.window->findChildren<WaveMonitorWidget *>().size(), 0);
            const auto *cables = d.find<QComboBox>("cableCombo");
            QCOMPARE(cables->count(), 1);
            QCOMPARE(cables->currentText(), serverTable().first().connection.name);
        }
        d.open();
        const auto *page = d.find<DynamicConfigWidget>("dynamicConfigWidget");
        QVERIFY(page->core());
        d.capture();
        QVERIFY(d.window->closeCurrentProject());
        QVERIFY(!page->core()); // which is gone
        QCOMPARE(d.toolTexts(), (QStringList{"Open...", "-"}));
        QCOMPARE(d.tabs()->count(), 0);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        // Built once, and from then on used again.
        if (round == 1)
            objects = d.window->findChildren<QObject *>().size();
        if (round > 1)
            QCOMPARE(d.window->findChildren<QObject *>().size(), objects);
    }
}

void tst_StandardProject::coreSelection()
{
    TestDesign design;
    design.cores = 2;
    Desktop d(design);
    d.open();
    auto *tree = d.find<QTreeWidget>("coreTree");
    const auto *dock = d.find<QDockWidget>("configDock");
    auto *windows = d.find<QComboBox>("comboBoxWindow");
    // Check marks, the core whose settings show, its windows, and what is enabled.
    const auto state = [&] {
        QString marks;
        for (int i = 0; i < tree->topLevelItemCount(); ++i)
            marks += tree->topLevelItem(i)->checkState(0) == Qt::Checked ? u'x' : u'-';
        return QStringList{marks, dock->windowTitle(), windows->currentText(), d.enabled()}.join(
            '|');
    };
    const auto clickBox = [&](int core) {
        const QRect row = tree->visualItemRect(tree->topLevelItem(core));
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {},
                          QPoint(row.left() + 10, row.center().y()));
    };
    QCOMPARE(state(), "x-| Core 0|1|OSA----P");
    // What stands on the page of one core is kept when the other one shows.
    QTest::keyClick(windows, Qt::Key_Down);
    QCOMPARE(state(), "x-| Core 0|2|OS-----P");
    auto *amounts = d.find<QComboBox>("comboBoxAmount");
    QTest::keyClick(amounts, Qt::Key_Up);
    const QString amount = amounts->currentText();
    clickBox(1);
    QVERIFY(amounts->currentText() != amount);
    QCOMPARE(state(), "xx| Core 1|1|OS-----P");
    clickBox(0);
    QCOMPARE(state(), "-x| Core 0|2|OSA----P");
    QCOMPARE(amounts->currentText(), amount);
    // The keyboard alone.
    tree->setFocus();
    QTest::keyClick(tree, Qt::Key_Down);
    QCOMPARE(state(), "-x| Core 1|1|OSA----P");
    QTest::keyClick(tree, Qt::Key_Space);
    QCOMPARE(state(), "--| Core 1|1|O------P");
}

// A click comes as several signals. What the fields can't show outlives all of them.
void tst_StandardProject::oddAmountOutlivesAClick()
{
    TestDesign design;
    design.cores = 2;
    design.amount = 1000;
    design.position = 500;
    Desktop d(design);
    d.open();
    const auto *tree = d.find<QTreeWidget>("coreTree");
    const QRect row = tree->visualItemRect(tree->topLevelItem(1));
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, row.center());
    QCOMPARE(d.find<QDockWidget>("configDock")->windowTitle(), " Core 1");
    QCOMPARE(d.find<QSpinBox>("spinBoxTrPos")->value(), 500);
}

void tst_StandardProject::windowsOfACore()
{
    TestDesign design;
    design.windows = 2;
    design.coreIndex = 3; // not its position in the list
    Desktop d(design);
    d.open();
    d.click("Export"); // off: nothing to export
    d.activate();
    d.press(Qt::Key_F1);
    QCOMPARE(d.enabled(), "---XF---");
    QTRY_COMPARE_WITH_TIMEOUT(d.tabs()->count(), 2, kCaptureTime);
    d.tabs()->setCurrentIndex(1); // the user looks at it, so it stays in front
    QTRY_VERIFY_WITH_TIMEOUT(d.isIdle(), kCaptureTime);
    // The keys are the viewer's without a click.
    const QWidget *focus = d.window->focusWidget();
    QVERIFY2(focus && d.wave(1)->isAncestorOf(focus),
             focus ? focus->metaObject()->className() : "none");
    QCOMPARE(d.enabled(), "OS---WEP"); // two windows: no Auto
    QCOMPARE(d.titles(), (QStringList{"Configuration", "core 3 window 0", "core 3 window 1"}));
    QCOMPARE(d.tabs()->currentIndex(), 1);
    QVERIFY(d.wave(1)->domain() != d.wave(2)->domain());

    // The zoom keys reach the tab in front, and nothing on the settings.
    d.press(Qt::Key_F8);
    QCOMPARE(d.wave(1)->zoomRate(), 2.0);
    QCOMPARE(d.wave(2)->zoomRate(), 1.0);
    d.press(Qt::Key_F7);
    d.press(Qt::Key_F7);
    QCOMPARE(d.wave(1)->zoomRate(), 0.5);
    d.press(Qt::Key_F6);
    QVERIFY(d.wave(1)->zoomRate() < 0.5);
    d.tabs()->setCurrentIndex(0);
    d.press(Qt::Key_F8);
    QCOMPARE(d.wave(2)->zoomRate(), 1.0);

    QStringList shown; // compared when the dialog is closed, or it would stay open
    const OnModal<ExportDialog> dialog([&](ExportDialog *box) {
        const auto *cores = box->findChild<QComboBox *>("comBoxKo");
        shown = {box->findChild<QLineEdit *>("editDir")->text(), QString::number(cores->count()),
                 cores->currentText(), box->findChild<QLineEdit *>("editClk")->text()};
        QTest::keyClicks(box->findChild<QLineEdit *>("editName"), "seen");
        QTest::keyClick(box, Qt::Key_Return);
    });
    d.click("Export");
    QCOMPARE(shown, (QStringList{d.directory.path(), "1", "Core 3", "clk"}));
    QVERIFY(d.boxes.seen.isEmpty());
    const QByteArray csv = contentOf(d.directory.filePath("seen_core3_window1.csv"));
    QCOMPARE(csv.trimmed().split('\n').last().split(',').first(),
             QByteArray::number(design.amount));
}

void tst_StandardProject::keysReachAWaitingRun_data()
{
    addColumns<bool>({"lite"});
    addRow("standard", false);
    addRow("lite", true);
}

// A run that waits for its trigger, or a lite one for the user whatever its delay, is stopped or
// forced from wherever the user is. Only the one kind tells of a stop, only the other of a force.
void tst_StandardProject::keysReachAWaitingRun()
{
    QFETCH(bool, lite);
    TestDesign design;
    design.lite = lite;
    design.fires = false;
    design.amount = 32;
    Desktop d(design);
    d.open();
    d.press(Qt::Key_F4); // mean nothing while idle
    d.press(Qt::Key_F3);
    if (lite) {
        auto *check = d.find<QCheckBox>("checkAutoTrigger");
        d.find<QSpinBox>("spinTriggerDelay")->setValue(1);
        clickMark(check);
        QVERIFY(!check->isChecked());
    }
    const QString told =
        lite ? "Tarno Signal Scope: Capture stopped!" : "Tarno Signal Scope: Capture Stopped!";
    enum class Way { Key, Button, KeyOnTip };
    int captured = 0;
    int boxes = 0;
    for (const Qt::Key key : {Qt::Key_F4, Qt::Key_F3}) {
        const bool isStop = key == Qt::Key_F4;
        for (const Way way : {Way::Key, Way::Button, Way::KeyOnTip}) {
            d.tabs()->setCurrentIndex(0);
            auto *place = d.find<QWidget>(lite ? "checkAutoTrigger" : "spinBoxTrPos");
            place->setFocus();
            d.press(Qt::Key_F1);
            QTest::qWait(lite ? 100 : 600); // past the first poll
            QCOMPARE(d.enabled(), "---XF---");
            QWidget *tip = waitingTip();
            QVERIFY(tip);
            if (lite)
                QCOMPARE(d.requests("OP_READ_CAPTURE_INIT"), captured);
            if (way == Way::KeyOnTip) {
                const auto offCentre = [&] {
                    return (tip->geometry().center() - d.window->geometry().center())
                        .manhattanLength();
                };
                d.window->setGeometry(160 + boxes, 130, 1100, 600);
                QTRY_VERIFY(offCentre() <= 4); // pixels that the window system shifts a window by
                tip->activateWindow();
                QTRY_COMPARE(QApplication::activeWindow(), tip); // no shortcut works now
                QTest::keyClick(tip, key);
            } else if (way == Way::Button) {
                d.click(isStop ? "Stop" : "Force Trigger");
            } else {
                d.press(key);
            }
            QTRY_VERIFY_WITH_TIMEOUT(d.isIdle(), isStop ? 1 : kCaptureTime);
            QVERIFY(d.enabled().startsWith("OSA--"));
            QCOMPARE(d.tabs()->count(), isStop ? 1 : 2);
            QCOMPARE(d.window->focusWidget() == place, isStop); // else the waves have it
            captured += isStop ? 0 : 1;
            boxes += isStop == lite ? 0 : 1;
            QCOMPARE(d.boxes.seen, QStringList(boxes, told));
        }
    }
    const int first = countAt(*d.wave(1), 0);
    QVERIFY(isStimulus(d.wave(1), design, first));
    if (!lite)
        return;
    QCOMPARE(first, (captured - 1) * design.amount);
    d.open(); // a closed project forgets the settings
    QVERIFY(d.find<QCheckBox>("checkAutoTrigger")->isChecked());
    QCOMPARE(d.find<QSpinBox>("spinTriggerDelay")->value(), 0);
}

// The programmer keeps still while a capture runs, and tells afterwards.
void tst_StandardProject::newBitstreamDuringARun()
{
    TestDesign design;
    design.fires = false;
    Desktop d(design);
    const QString bitstream = d.directory.filePath("a.fs");
    putFile(bitstream, "//CheckSum: 1\n//KEOCRC: 2\n"); // the design's check value is 1
    d.window->openFile(d.file(), "KR", "KR-A", bitstream);
    const auto *page = d.window->findChild<KeoProgrammerWidget *>();
    auto *log = page->findChild<QTextEdit *>(QStringLiteral("textBrowser"));
    QVERIFY(log->toPlainText().contains("a.fs and keo file do not match."));
    QCOMPARE(page->rows().first().fsFile, QString());
    putFile(bitstream, "//CheckSum: 1\n//KEOCRC: 1\n");
    d.window->openFile(d.file(), "KR", "KR-A", bitstream);
    QCOMPARE(page->rows().first().checksum, "1");

    d.press(Qt::Key_F1);
    log->clear();
    putFile(bitstream, "//CheckSum: 22\n");
    QTRY_COMPARE(page->rows().first().checksum, "22");
    QVERIFY(d.isBusy());
    QCOMPARE(log->toPlainText(), QString());
    d.press(Qt::Key_F4);
    QVERIFY2(log->toPlainText().contains("Warn: File updated,checksum:22."),
             qPrintable(log->toPlainText()));
}

void tst_StandardProject::errors_data()
{
    addColumns<bool, int, QString>({"lite", "result", "text"});
    addRow("not programmed", false, -20, "Device does not load fs file yet.");
    addRow("lite: unknown", true, 7, "Unknown device error.");
}

void tst_StandardProject::errors()
{
    QFETCH(bool, lite);
    QFETCH(int, result);
    QFETCH(QString, text);
    TestDesign design;
    design.lite = lite;
    design.amount = 32;
    design.faults =
        QStringLiteral(R"([{ "at": "OPEN", "nth": 2, "do": "result", "value": %1 }])").arg(result);
    Desktop d(design);
    d.open();
    d.capture();
    d.press(Qt::Key_F1);
    QTRY_COMPARE_WITH_TIMEOUT(d.boxes.seen, QStringList("Error: " + text), kCaptureTime);
    QTRY_VERIFY(d.isIdle() && !QApplication::activeModalWidget());
    QVERIFY(d.enabled().startsWith("OSA--"));
    d.capture(); // nothing is left of the failed one
    QCOMPARE(d.tabs()->count(), 2);
    JtagSession::instance()->disconnectAll();
    for (int time = 2; time < 4; ++time) { // told each time
        d.press(Qt::Key_F1);
        QCOMPARE(d.boxes.seen.size(), time);
        QCOMPARE(d.boxes.seen.last(), "Error: Can not connect with JTAG Server!");
        QVERIFY(d.isIdle() && d.isEnabled("Start"));
    }
}

KEO_WIDGET_TEST_MAIN(tst_StandardProject)
#include "tst_standardproject.moc"
