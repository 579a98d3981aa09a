// The whole way of a user of a lite core through the main window, against a simulated board: open,
// capture at once or later, look, save and open again.

#include <design/projectfile.h>
#include <design/randomwindow.h>
#include <project/reloadbanner.h>
#include <support/desktop.h>

#include <QSpinBox>

using namespace KEO;

class tst_LiteRoad : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void fromCaptureToSessionAndBack();
    void longWait_data();
    void longWait();
};

namespace {

TestDesign liteDesign()
{
    TestDesign design;
    design.lite = true;
    return design;
}

QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The one on the project's page, or null.
ReloadBanner *banner(const Desktop &d)
{
    for (ReloadBanner *candidate : d.window->findChildren<ReloadBanner *>()) {
        if (!candidate->isHidden())
            return candidate;
    }
    return nullptr;
}

/// Counts how often a widget is painted.
class PaintWatch final : public QObject
{
public:
    explicit PaintWatch(QWidget *widget) { widget->installEventFilter(this); }
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
    int count = 0;
};

} // namespace

void tst_LiteRoad::fromCaptureToSessionAndBack()
{
    const TestDesign design = liteDesign();
    Desktop d(design);
    d.open();
    auto *delay = d.find<QSpinBox>("spinTriggerDelay");
    QCOMPARE(delay->text(), "0ms");
    delay->selectAll();
    QTest::keyClicks(delay, "400");
    d.press(Qt::Key_F1);
    QVERIFY(d.isBusy() && waitingTip());
    QTest::qWait(100);
    QCOMPARE(d.requests("OP_READ_CAPTURE_INIT"), 0); // still waiting
    QTRY_VERIFY_WITH_TIMEOUT(!d.isBusy(), kCaptureTime);
    QVERIFY(isStimulus(d.wave(1), design, 0));

    // The user renames a signal and zooms; the next captures go on with it.
    QDomDocument document;
    QDomElement window = d.wave(1)->saveWindow(document);
    window.firstChildElement("Signals").firstChildElement("Signal").setAttribute("text", "top bit");
    d.wave(1)->loadWindow(window);
    for (const double zoom : {0.25, 0.5}) {
        d.wave(1)->setZoom(zoom);
        d.capture();
        QCOMPARE(d.wave(1)->zoomRate(), zoom);
    }
    QCOMPARE(d.wave(1)->signalMap()[0].text, "top bit");
    QVERIFY(isStimulus(d.wave(1), design, 2 * design.amount));

    const QString project = d.directory.filePath("run.analyzer_prj");
    const QString data = d.directory.filePath("run.xml");
    d.saveAs(d.directory.filePath("run"));
    const QByteArray description = bytesOf(d.file());
    QVERIFY(description.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<KEO_CONFIG>\n"
                                   "    <Version>3.0</Version>\n    <Mode>Lite</Mode>\n"
                                   "    <KoCore_Lite index=\"0\" sample_clock=\"clk\" "));
    QVERIFY(description.contains("<Signal text=\"top bit\">count[15]</Signal>"));
    QVERIFY(!description.contains("KEO_ID"));
    QVERIFY(bytesOf(data).contains("\n    <Window index=\"0\">\n"));
    const auto paths = readProjectFile(project);
    QVERIFY(paths && *paths == (ProjectFile{d.file(), data}));

    // Our own save is a change on disk like any other.
    QTRY_VERIFY(banner(d));

    // Opened again, it shows the same under the number of the window.
    const QString saved = textOf(d.wave(1)->contents());
    d.open(project);
    QCOMPARE(d.titles(), (QStringList{"Trigger", "Window 0"}));
    QCOMPARE(textOf(d.wave(1)->contents()), saved);
    QVERIFY(!banner(d));

    // Its paths stand crosswise: what is saved now has the samples in the project file.
    d.wave(1)->setZoom(0.5);
    d.click("Save...");
    QVERIFY(bytesOf(project).startsWith("<?xml") && bytesOf(project).contains("<WaveData>"));
    const auto crossed = readProjectFile(data);
    QVERIFY(crossed && *crossed == (ProjectFile{d.file(), project}));

    // The name that the user knows still opens it, and the next save puts both files right.
    d.open(project);
    QCOMPARE(d.titles(), (QStringList{"Trigger", "Window 0"}));
    d.click("Save...");
    QVERIFY(bytesOf(data).contains("<WaveData>"));
    const auto righted = readProjectFile(project);
    QVERIFY(righted && righted->dataFile == data);
    d.open(project);
    QCOMPARE(d.titles(), (QStringList{"Trigger", "Window 0"}));
    d.wave(1)->setZoom(0.5);
    d.click("Save...");

    // Under a name that tells what it is, the file with the paths opens again.
    const QString renamed = d.directory.filePath("again.analyzer_prj");
    QVERIFY(QFile::rename(data, renamed));
    d.open(renamed);
    QCOMPARE(d.titles(), (QStringList{"Trigger", "Window 0"}));
    d.wave(1)->setZoom(0.5);

    // A capture takes the place of the saved waves, and their arrangement.
    d.capture();
    QCOMPARE(d.titles(), (QStringList{"Trigger", "core 0 window 0"}));
    QVERIFY(isStimulus(d.wave(1), design, 3 * design.amount));
    QCOMPARE(d.wave(1)->zoomRate(), 0.5);

    QVERIFY(d.boxes.seen.isEmpty());
}

void tst_LiteRoad::longWait_data()
{
    QTest::addColumn<QString>("fault");
    QTest::newRow("slow clock") << QString();
    QTest::newRow("answers lost")
        << R"([{ "at": "READ_START_REG", "nth": "every", "do": "lost" }])";
}

// Polling takes every turn of the event loop, and yet the window lives: it paints, takes keys and
// runs its timers, and Stop ends the wait. What a server leaves unanswered does not pile up.
void tst_LiteRoad::longWait()
{
    QFETCH(QString, fault);
    TestDesign design = liteDesign();
    design.samplesPerSecond = 1; // a capture of minutes
    design.faults = fault;
    Desktop d(design);
    d.open();
    auto *delay = d.find<QSpinBox>("spinTriggerDelay");
    d.press(Qt::Key_F1);
    QTRY_VERIFY(d.requests("READ_START_REG") > 0);
    for (int round = 0; round < 20; ++round) {
        PaintWatch paints(delay);
        int ticks = 0;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] { ++ticks; });
        timer.start(10);
        QTest::keyClick(delay, Qt::Key_Up);
        QCOMPARE(delay->value(), round + 1);
        QTRY_VERIFY(paints.count > 0 && ticks > 2);
    }
    QVERIFY(d.isBusy() && waitingTip());
    if (!fault.isEmpty())
        QVERIFY(d.requests("READ_START_REG") < 200);
    d.press(Qt::Key_F4);
    QVERIFY(!d.isBusy() && !waitingTip());
    QVERIFY(d.boxes.seen.isEmpty());
}

KEO_WIDGET_TEST_MAIN(tst_LiteRoad)
#include "tst_literoad.moc"
