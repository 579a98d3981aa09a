// The whole way of a user of a lite core through the main window, against a simulated board: open,
// capture at once, later or on demand, look, save, open again, export, and change between kinds.

#include <design/projectfile.h>
#include <design/randomwindow.h>
#include <project/reloadbanner.h>
#include <support/desktop.h>

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QPushButton>
#include <QSpinBox>

using namespace KEO;

class tst_LiteRoad : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void fromCaptureToSessionAndBack();
    void waitsForTheUser();
    void longWait_data();
    void longWait();
    void bothKindsInTurn();
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

void write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
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

    const OnModal<QDialog> dialog([](QDialog *box) {
        QTest::keyClicks(box->findChild<QLineEdit *>("editName"), "waves");
        QTest::mouseClick(box->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok),
                          Qt::LeftButton);
    });
    d.click("Export");
    QVERIFY(dialog.seen());
    const QByteArray last = bytesOf(d.directory.filePath("waves.csv")).trimmed().split('\n').last();
    QVERIFY2(last.startsWith(QByteArray::number(design.amount) + ','), last);
    QVERIFY(d.boxes.seen.isEmpty());
}

// Without Auto Trigger nothing begins before Force Trigger, whatever the delay.
void tst_LiteRoad::waitsForTheUser()
{
    const TestDesign design = liteDesign();
    const QString told = "Tarno Signal Scope: Capture stopped!";
    Desktop d(design);
    d.open();
    auto *check = d.find<QCheckBox>("checkAutoTrigger");
    d.find<QSpinBox>("spinTriggerDelay")->setValue(1);
    QTest::mouseClick(check, Qt::LeftButton, {}, QPoint(8, check->height() / 2));
    QVERIFY(!check->isChecked());

    enum class Way { Button, KeyOnTip };
    int captured = 0;
    for (const Way way : {Way::Button, Way::KeyOnTip}) {
        d.press(Qt::Key_F1);
        QTest::qWait(200);
        QVERIFY(d.isBusy() && waitingTip() && check->isEnabled());
        QVERIFY(d.enabled() == "---XF---");
        QCOMPARE(d.requests("OP_READ_CAPTURE_INIT"), captured);
        if (way == Way::Button)
            d.click("Force Trigger");
        else
            QTest::keyClick(waitingTip(), Qt::Key_F3);
        QTRY_VERIFY_WITH_TIMEOUT(!d.isBusy(), kCaptureTime);
        QVERIFY(!waitingTip());
        QVERIFY(isStimulus(d.wave(1), design, captured * design.amount));
        ++captured;
        QCOMPARE(d.boxes.seen, QStringList(captured, told));
    }

    // Stop says nothing, and takes the waves of before along as Start did.
    for (const Way way : {Way::Button, Way::KeyOnTip}) {
        d.press(Qt::Key_F1);
        QTest::qWait(50);
        if (way == Way::Button)
            d.click("Stop");
        else
            QTest::keyClick(waitingTip(), Qt::Key_F4);
        QVERIFY(!d.isBusy() && !waitingTip());
        QCOMPARE(d.titles(), QStringList("Trigger"));
    }
    QCOMPARE(d.boxes.seen.size(), captured);

    // A closed project forgets the settings.
    d.open();
    QVERIFY(check->isChecked());
    QCOMPARE(d.find<QSpinBox>("spinTriggerDelay")->value(), 0);
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

// Standard and lite after one another, each with waves and a banner: the window holds what belongs
// to the open one and nothing else, and does not grow.
void tst_LiteRoad::bothKindsInTurn()
{
    Desktop d(liteDesign());
    TestDesign standard;
    standard.amount = 32;
    const QDir folder(d.directory.filePath("standard"));
    QVERIFY(folder.mkpath("."));
    standard.write(folder.path());
    const QString keo = folder.filePath("design.keo");
    const auto touch = [](const QString &path) { write(path, bytesOf(path) + ' '); };
    const auto closeBanner = [&] {
        QTest::mouseClick(banner(d)->findChild<QPushButton *>(), Qt::LeftButton);
        QTRY_VERIFY(!banner(d));
    };
    QStringList tools;
    qsizetype objects = 0;
    for (int round = 0; round < 3; ++round) {
        d.open();
        d.capture();
        QCOMPARE(d.titles(), (QStringList{"Trigger", "core 0 window 0"}));
        touch(d.file());
        QTRY_VERIFY(banner(d));

        d.open(keo);
        QCOMPARE(d.titles(), QStringList("Configuration"));
        QVERIFY(d.window->findChildren<WaveMonitorWidget *>().isEmpty());
        QVERIFY(d.isIdle() && !d.isEnabled("Save..."));
        touch(d.file()); // nobody's business now
        touch(keo);
        QTRY_VERIFY(banner(d));
        QCOMPARE(d.tabs()->widget(0)->findChildren<ReloadBanner *>().size(), 1);

        // The lite one again, and closed from its banner.
        d.open();
        QVERIFY(!banner(d));
        QCOMPARE(d.titles(), QStringList("Trigger"));
        if (round == 0)
            tools = d.toolTexts();
        QCOMPARE(d.toolTexts(), tools);
        const QByteArray description = bytesOf(d.file());
        QVERIFY(QFile::remove(d.file()));
        QTRY_VERIFY(banner(d));
        closeBanner();
        QCOMPARE(d.tabs()->count(), 0);
        write(d.file(), description);

        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        // Built once, and from then on used again.
        if (round == 1)
            objects = d.window->findChildren<QObject *>().size();
        if (round > 1)
            QCOMPARE(d.window->findChildren<QObject *>().size(), objects);
    }

    // Reload takes the waves away, and the settings.
    d.open();
    auto *check = d.find<QCheckBox>("checkAutoTrigger");
    check->setChecked(false);
    d.press(Qt::Key_F1);
    d.click("Force Trigger");
    QTRY_COMPARE_WITH_TIMEOUT(d.tabs()->count(), 2, kCaptureTime);
    touch(d.file());
    QTRY_VERIFY(banner(d));
    closeBanner();
    QCOMPARE(d.titles(), QStringList("Trigger"));
    QVERIFY(check->isChecked());
}

KEO_WIDGET_TEST_MAIN(tst_LiteRoad)
#include "tst_literoad.moc"
