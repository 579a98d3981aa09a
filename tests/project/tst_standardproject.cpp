// A standard project in a window, driven by keys and clicks, with a simulated board behind it.

#include "projectwindow.h"

#include <export_ui/exportdialog.h>
#include <programmer_ui/keoprogrammerwidget.h>

#include <QBitArray>
#include <QComboBox>
#include <QDockWidget>
#include <QDomDocument>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QTextEdit>

using namespace KEO;
using WaveMonitor::WaveMonitorWidget;

class tst_StandardProject : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void window();
    void rejectedFiles();
    void coreSelection();
    void captureShowsTheStimulus();
    void exportWritesTheStimulus();
    void arrangementOutlivesStart();
    void autoRounds();
    void keysReachAWaitingRun();
    void closeWhileArmed();
    void newBitstreamDuringARun();
    void errors();
};

namespace {

void writeFile(const QString &path, const QByteArray &text)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(text), text.size());
}

/// The design's file with its core once more, as core 1.
QString withSecondCore(const Bench &bench)
{
    QFile file(bench.file());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QString text = QString::fromUtf8(file.readAll());
    const qsizetype begin = text.indexOf(QStringLiteral("<KoCore"));
    const qsizetype end = text.indexOf(QStringLiteral("</KoCore>")) + 9;
    QString second = text.mid(begin, end - begin);
    second.replace(QStringLiteral("index=\"0\" sample_clock"),
                   QStringLiteral("index=\"1\" sample_clock"));
    text.insert(end, second);
    const QString path = bench.directory.filePath("two.keo");
    writeFile(path, text.toUtf8());
    return path;
}

/// What the bus of the design shows at a sample.
int countAt(const WaveMonitorWidget &wave, int sample)
{
    const auto elements = wave.signalMap();
    int count = 0;
    for (int bit = 0; bit < 16; ++bit)
        count = count << 1 | int(elements[bit].data.testBit(sample));
    return count;
}

/// The columns of an exported table by their titles; without the time.
QMap<QString, QStringList> columnsOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QMap<QString, QStringList> columns;
    QStringList titles;
    while (!file.atEnd()) {
        QString line = QString::fromUtf8(file.readLine());
        line.chop(2); // comma, line end
        const QStringList cells = line.split(QStringLiteral(", "));
        if (line.startsWith(QLatin1String("time unit: "))) {
            titles = cells;
            continue;
        }
        for (qsizetype i = 1; i < titles.size() && i < cells.size(); ++i)
            columns[titles[i]].append(cells[i]);
    }
    return columns;
}

QString counterText(const WaveMonitorWidget &wave)
{
    for (const QLabel *label : wave.findChildren<QLabel *>()) {
        if (label->text().contains(QLatin1String("Autorun")))
            return label->text();
    }
    return {};
}

} // namespace

void tst_StandardProject::window()
{
    const Bench bench({});
    ProjectWindow w;
    const auto toolTexts = [&] {
        QStringList texts;
        for (const QAction *action : w.toolBar->actions())
            texts.append(action->isSeparator() ? QStringLiteral("-") : action->text());
        return texts;
    };
    for (int round = 0; round < 2; ++round) {
        QVERIFY(w.open(bench.file()));
        QCOMPARE(toolTexts(),
                 (QStringList{"Open...", "", "-", "", "Start", "Auto", "Force Trigger", "Stop", "-",
                              "Zoom In", "Zoom Out", "Zoom Fit", "-", "Save...", "Export"}));
        QCOMPARE(w.titles(), QStringList("Configuration"));
        QCOMPARE(w.enabled(), "OSA----P");
        const auto *cables = w.toolBar->findChild<QComboBox *>(QStringLiteral("cableCombo"));
        QCOMPARE(cables->count(), 1);
        QCOMPARE(cables->currentText(), serverTable().first().connection.name);
        QVERIFY(w.project->closeProject(w.window.get(), {}));
        QCOMPARE(toolTexts(), QStringList("Open..."));
        QCOMPARE(w.tabs->count(), 0);
        QVERIFY(!w.project->toolBarGetter && !w.project->tabWidgetGetter &&
                !w.project->openActionGetter);
    }
}

void tst_StandardProject::rejectedFiles()
{
    const QTemporaryDir directory;
    writeFile(directory.filePath("nocore.zeo"), "<KEO_CONFIG></KEO_CONFIG>");
    writeFile(directory.filePath("noxml.keo"), "<<<");
    writeFile(directory.filePath("other.KEO"), "<KEO_CONFIG></KEO_CONFIG>"); // nobody's business
    ProjectWindow w;
    for (const char *name : {"missing.keo", "nocore.zeo", "noxml.keo", "other.KEO"}) {
        QVERIFY2(!w.open(directory.filePath(name)), name);
        QCOMPARE(w.tabs->count(), 0);
    }
    QCOMPARE(w.boxes.seen, QStringList(3, "Error: Invalid KEO file specified in project."));
}

void tst_StandardProject::coreSelection()
{
    const Bench bench({});
    ProjectWindow w(withSecondCore(bench));
    QTreeWidget *tree = w.tree();
    const auto *dock = w.tabs->findChild<QDockWidget *>(QStringLiteral("configDock"));
    auto *windows = w.tabs->findChild<QComboBox *>(QStringLiteral("comboBoxWindow"));
    QCOMPARE(tree->topLevelItemCount(), 2);
    const auto checked = [&] {
        QString marks;
        for (int i = 0; i < 2; ++i)
            marks += tree->topLevelItem(i)->checkState(0) == Qt::Checked ? u'x' : u'-';
        return marks;
    };
    const auto clickBox = [&](int core) {
        const QRect row = tree->visualItemRect(tree->topLevelItem(core));
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {},
                          QPoint(row.left() + 10, row.center().y()));
    };
    QCOMPARE(checked(), "x-");
    QCOMPARE(dock->windowTitle(), " Core 0");

    // What stands on the page of one core is kept when the other one shows.
    QTest::keyClick(windows, Qt::Key_Down);
    QCOMPARE(windows->currentText(), "2");
    QCOMPARE(w.enabled(), "OS-----P");
    clickBox(1);
    QCOMPARE(checked(), "xx");
    QCOMPARE(dock->windowTitle(), " Core 1");
    QCOMPARE(windows->currentText(), "1");
    QCOMPARE(w.enabled(), "OS-----P");
    clickBox(0);
    QCOMPARE(checked(), "-x");
    QCOMPARE(windows->currentText(), "2");
    QCOMPARE(w.enabled(), "OSA----P");

    // The keyboard alone.
    tree->setFocus();
    QTest::keyClick(tree, Qt::Key_Down);
    QCOMPARE(dock->windowTitle(), " Core 1");
    QTest::keyClick(tree, Qt::Key_Space);
    QCOMPARE(checked(), "--");
    QCOMPARE(w.enabled(), "O------P");

    // A file that can't be loaded takes nothing of the open design away.
    QVERIFY(!w.project->openFile(bench.directory.filePath("missing.keo")));
    QCOMPARE(tree->topLevelItemCount(), 2);
    QTest::keyClick(tree, Qt::Key_Up);
    QCOMPARE(windows->currentText(), "2");
}

void tst_StandardProject::captureShowsTheStimulus()
{
    TestDesign design;
    design.windows = 2;
    design.coreIndex = 3;                   // not its position in the list
    design.device = QStringLiteral("KR-A"); // one of the models that write a row more
    const Bench bench(design);
    ProjectWindow w;
    QVERIFY(w.open(bench.file(), design.device));
    w.start();
    QCOMPARE(w.enabled(), "---XF---");
    QVERIFY(ProjectWindow::tip());
    QTRY_COMPARE_WITH_TIMEOUT(w.tabs->count(), 2, kCaptureTime);
    QVERIFY(w.wave(1) && w.tabs->currentWidget() == w.wave(1));
    w.tabs->setCurrentIndex(1); // the user looks at it, so it stays in front
    QTRY_VERIFY_WITH_TIMEOUT(!w.project->isBusy(), kCaptureTime);

    QVERIFY(!ProjectWindow::tip());
    QCOMPARE(w.enabled(), "OS---WEP"); // two windows: no Auto
    QCOMPARE(w.titles(), (QStringList{"Configuration", "core 3 window 0", "core 3 window 1"}));
    QCOMPARE(w.tabs->currentIndex(), 1);
    QVERIFY(w.wave(1)->domain() != w.wave(2)->domain());
    qint64 earliest = 0; // sample at which the window may begin
    for (int window = 0; window < 2; ++window) {
        const auto elements = w.wave(window + 1)->signalMap();
        QCOMPARE(elements.size(), design.signalCount());
        const qint64 trigger = design.firstTrigger(earliest + design.position);
        for (int signal = 0; signal < design.signalCount(); ++signal) {
            QCOMPARE(elements[signal].name, design.name(signal));
            QBitArray expected(design.amount);
            for (int sample = 0; sample < design.amount; ++sample)
                expected[sample] = design.level(signal, trigger - design.position + sample);
            QCOMPARE(elements[signal].data, expected);
        }
        earliest = trigger - design.position + design.amount;
    }

    // The zoom keys reach the tab in front, and nothing on the settings.
    w.press(Qt::Key_F8);
    QCOMPARE(w.wave(1)->zoomRate(), 2.0);
    QCOMPARE(w.wave(2)->zoomRate(), 1.0);
    w.press(Qt::Key_F7);
    w.press(Qt::Key_F7);
    QCOMPARE(w.wave(1)->zoomRate(), 0.5);
    w.press(Qt::Key_F6);
    QVERIFY(w.wave(1)->zoomRate() < 0.5);
    w.tabs->setCurrentIndex(0);
    w.press(Qt::Key_F8);
    QCOMPARE(w.wave(2)->zoomRate(), 1.0);
}

void tst_StandardProject::exportWritesTheStimulus()
{
    TestDesign design;
    design.amount = 64;
    design.windows = 2;
    design.coreIndex = 3;
    const Bench bench(design);
    ProjectWindow w;
    QVERIFY(w.open(bench.file(), design.device));
    const auto pressExport = [&] {
        QWidget *button = w.toolBar->widgetForAction(w.action("exportAction"));
        QTest::mouseClick(button, Qt::LeftButton);
    };
    pressExport(); // off: nothing to export
    w.capture();
    OnModal<ExportDialog> dialog([&](ExportDialog *shown) {
        QCOMPARE(shown->findChild<QLineEdit *>("editDir")->text(), bench.directory.path());
        QCOMPARE(shown->findChild<QComboBox *>("comBoxKo")->count(), 1);
        QCOMPARE(shown->findChild<QComboBox *>("comBoxKo")->currentText(), "Core 3");
        QCOMPARE(shown->findChild<QLineEdit *>("editClk")->text(), "clk");
        QTest::keyClicks(shown->findChild<QLineEdit *>("editName"), "seen");
        QTest::keyClick(shown, Qt::Key_Return);
    });
    pressExport();
    QVERIFY(dialog.seen() && w.boxes.seen.isEmpty());

    qint64 earliest = 0; // sample at which the window may begin
    for (int window = 0; window < 2; ++window) {
        const auto columns = columnsOf(
            bench.directory.filePath(QStringLiteral("seen_core3_window%1.csv").arg(window)));
        QCOMPARE(columns.size(), 1 + design.signalCount());
        const qint64 trigger = design.firstTrigger(earliest + design.position);
        for (int signal = 0; signal < design.signalCount(); ++signal) {
            QStringList expected("X");
            for (int sample = 0; sample < design.amount; ++sample)
                expected.append(
                    QString::number(design.level(signal, trigger - design.position + sample)));
            QCOMPARE(columns[design.name(signal)], expected);
        }
        const QString counted = columns["count[15:0]"].value(1 + design.position);
        QCOMPARE(counted.toInt(nullptr, 16), int(trigger % TestDesign::kLength));
        earliest = trigger - design.position + design.amount;
    }
}

void tst_StandardProject::arrangementOutlivesStart()
{
    TestDesign design;
    design.amount = 32;
    const Bench bench(design);
    ProjectWindow w(bench.file());
    w.capture();
    QCOMPARE(w.titles().size(), 2);

    // The user renames a signal and zooms.
    QDomDocument document;
    QDomElement saved = w.wave(1)->saveWindow(document);
    QDomElement signal = saved.firstChildElement("Signals").firstChildElement("Signal");
    const int id = signal.attribute("id").toInt();
    signal.setAttribute("text", "renamed");
    w.wave(1)->loadWindow(saved);
    w.wave(1)->setZoom(0.25);
    const auto arrangement = w.wave(1)->saveState();

    const QPointer<WaveMonitorWidget> old = w.wave(1);
    w.capture();
    QVERIFY(!old);
    QCOMPARE(w.titles().size(), 2);
    QCOMPARE(w.wave(1)->domain(), quint64(0));
    QCOMPARE(w.wave(1)->signalMap()[id].text, "renamed");
    const auto restored = w.wave(1)->saveState();
    QCOMPARE(restored->zoomRate, 0.25);
    QCOMPARE(restored->nameWidth, arrangement->nameWidth);

    // A close throws it away, the file was not saved.
    QVERIFY(w.project->closeProject(w.window.get(), {}));
    QVERIFY(w.open(bench.file()));
    w.capture();
    QCOMPARE(w.wave(1)->zoomRate(), 1.0);
    QCOMPARE(w.wave(1)->signalMap()[id].text, QString());
}

void tst_StandardProject::autoRounds()
{
    TestDesign design;
    design.amount = 32;
    const Bench bench(design);
    ProjectWindow w(bench.file());
    w.start(Qt::Key_F2);
    QVERIFY(ProjectWindow::tip());
    QCOMPARE(w.enabled(), "---X----");
    QTRY_COMPARE_WITH_TIMEOUT(w.tabs->count(), 2, kCaptureTime);
    QVERIFY(!ProjectWindow::tip());
    const QPointer<WaveMonitorWidget> wave = w.wave(1);
    QCOMPARE(counterText(*wave), "    Autorun Counter: 1");
    const int firstTrigger = countAt(*wave, design.position);
    QCOMPARE(firstTrigger, int(design.firstTrigger(design.position)));
    QTRY_COMPARE_WITH_TIMEOUT(counterText(*wave), "    Autorun Counter: 3", kCaptureTime);
    QVERIFY(wave && w.tabs->count() == 2);
    const int thirdTrigger = countAt(*wave, design.position);
    QVERIFY(design.isTrigger(thirdTrigger) && thirdTrigger != firstTrigger);
    QCOMPARE(w.enabled(), "---X----");
    w.press(Qt::Key_F4);
    QCOMPARE(w.boxes.seen, QStringList("Window: Capture Stopped!"));
    QVERIFY(!w.project->isBusy());
    QVERIFY(wave);
}

// A run that waits for its trigger is stopped or forced from wherever the user is.
void tst_StandardProject::keysReachAWaitingRun()
{
    TestDesign design;
    design.fires = false;
    design.amount = 32;
    const Bench bench(design);
    ProjectWindow w(bench.file());
    w.press(Qt::Key_F4); // mean nothing while idle
    w.press(Qt::Key_F3);
    QVERIFY(w.boxes.seen.isEmpty());
    int stops = 0;
    for (const Qt::Key key : {Qt::Key_F4, Qt::Key_F3}) {
        for (const bool onTip : {false, true}) {
            w.start();
            QTest::qWait(700); // past the first poll
            QVERIFY(w.project->isBusy());
            if (onTip) {
                QWidget *tip = ProjectWindow::tip();
                tip->activateWindow();
                QTRY_COMPARE(QApplication::activeWindow(), tip); // no shortcut works now
                QTest::keyClick(tip, key);
            } else {
                w.press(key);
            }
            if (key == Qt::Key_F4)
                ++stops;
            else
                QTRY_VERIFY_WITH_TIMEOUT(!w.project->isBusy(), kCaptureTime);
            QVERIFY(w.isReady());
            QCOMPARE(w.tabs->count(), key == Qt::Key_F4 ? 1 : 2);
            QCOMPARE(w.boxes.seen, QStringList(stops, "Window: Capture Stopped!"));
        }
    }
}

void tst_StandardProject::closeWhileArmed()
{
    TestDesign design;
    design.fires = false;
    const Bench bench(design);
    ProjectWindow w(bench.file());
    w.start();
    QTest::qWait(700);
    QVERIFY(!w.project->closeProject(w.window.get(), {}));
    QVERIFY(!w.project->closeProject(w.window.get(), [] { return false; }));
    QVERIFY(w.project->isBusy());
    QVERIFY(w.project->closeProject(w.window.get(), [] { return true; }));
    QVERIFY(!w.project->isBusy() && !ProjectWindow::tip());
    QVERIFY(w.openAction->isEnabled());
    QTest::qWait(600); // late replies and ticks find nothing
    QCOMPARE(w.tabs->count(), 0);
    QVERIFY(w.boxes.seen.isEmpty());
}

// The programmer keeps still while a capture runs, and tells afterwards.
void tst_StandardProject::newBitstreamDuringARun()
{
    TestDesign design;
    design.fires = false;
    const Bench bench(design);
    const QString bitstream = bench.directory.filePath("a.fs");
    ProjectWindow w(bench.file());
    const auto *page = w.tabs->findChild<KeoProgrammerWidget *>();
    auto *log = page->findChild<QTextEdit *>(QStringLiteral("textBrowser"));
    writeFile(bitstream, "//CheckSum: 1\n//KEOCRC: 2\n"); // the design's check value is 1
    w.project->setDevice("KR", "KR-A", bitstream);
    QVERIFY(log->toPlainText().contains("a.fs and keo file do not match."));
    QCOMPARE(page->rows().first().fsFile, QString());
    log->clear();
    writeFile(bitstream, "//CheckSum: 1\n//KEOCRC: 1\n");
    w.project->setDevice("KR", "KR-A", bitstream);
    QCOMPARE(page->rows().first().checksum, "1");

    w.start();
    writeFile(bitstream, "//CheckSum: 22\n");
    QTRY_COMPARE(page->rows().first().checksum, "22");
    QVERIFY(w.project->isBusy());
    QCOMPARE(log->toPlainText(), QString());
    w.press(Qt::Key_F4);
    QVERIFY2(log->toPlainText().contains("Warn: File updated,checksum:22."),
             qPrintable(log->toPlainText()));
}

void tst_StandardProject::errors()
{
    const QMap<int, QString> texts{{-20, "Device does not load fs file yet."},
                                   {1, "Open device failed."},
                                   {77, "Unknown device error ID77."},
                                   {-1, "Unknown device error ID-1."}};
    TestDesign design;
    design.amount = 32;
    for (const int result : texts.keys()) {
        design.faults =
            QStringLiteral("[{ \"at\": \"OPEN\", \"nth\": 2, \"do\": \"result\", \"value\": %1 }]")
                .arg(result);
        const Bench bench(design);
        const ProjectWindow w(bench.file());
        w.capture();
        w.start();
        QTRY_COMPARE_WITH_TIMEOUT(w.boxes.seen, QStringList("Error: " + texts[result]),
                                  kCaptureTime);
        QTRY_VERIFY(!QApplication::activeModalWidget());
        QVERIFY(w.isReady());
        w.capture(); // nothing is left of the failed one
        QCOMPARE(w.tabs->count(), 2);
        JtagSession::instance()->disconnectAll();
        w.press(Qt::Key_F1);
        QCOMPARE(w.boxes.seen.last(), "Error: Can not connect with JTAG Server!");
        QVERIFY(w.isReady());
    }
}

KEO_WIDGET_TEST_MAIN(tst_StandardProject)
#include "tst_standardproject.moc"
