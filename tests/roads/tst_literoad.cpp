// The whole way of a user of a lite core through the main window, against a simulated board: open,
// capture at once, later or on demand, look, save, open again, export, and change between kinds.

#include "../capture/fakeserver.h"
#include "desktop.h"

#include <project/reloadbanner.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QDomDocument>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>

Q_DECLARE_METATYPE(TestDesign)

using namespace KEO;
using WaveMonitor::WaveMonitorWidget;

class tst_LiteRoad : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void captures_data();
    void captures();
    void fromCaptureToSessionAndBack();
    void waitsForTheUser();
    void autoRounds();
    void longWait_data();
    void longWait();
    void errors_data();
    void errors();
    void answersWithoutBits();
    void opensWhatItCan_data();
    void opensWhatItCan();
    void bothKindsInTurn();
    void closeDuringCapture();
};

namespace {

TestDesign liteDesign()
{
    TestDesign design;
    design.lite = true;
    return design;
}

/// Are all signals over all samples the design's, beginning with the sample \a first?
bool isStimulus(const WaveMonitorWidget *wave, const TestDesign &design, qint64 first)
{
    if (!wave || wave->signalMap().size() != design.signalCount())
        return false;
    const auto elements = wave->signalMap();
    for (int signal = 0; signal < design.signalCount(); ++signal) {
        QBitArray expected(design.amount);
        for (int sample = 0; sample < design.amount; ++sample)
            expected[sample] = design.level(signal, first + sample);
        if (elements[signal].data != expected || elements[signal].name != design.name(signal))
            return false;
    }
    return true;
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

/// Presses Save and gives the dialog that name, in place of the one of the last opened file.
void saveAs(const Desktop &d, const QString &path)
{
    d.window->setStartDir(d.file());
    const OnModal<QFileDialog> dialog([&](QFileDialog *box) {
        auto *name = box->findChild<QLineEdit *>("fileNameEdit");
        QCOMPARE(box->directory().path() + u'/' + name->text(), d.directory.filePath("design"));
        name->setText(path);
        QTest::keyClick(box, Qt::Key_Return);
    });
    d.click("Save...");
    QVERIFY(dialog.seen());
}

QStringList titles(const Desktop &d)
{
    QStringList all;
    for (int tab = 0; tab < d.tabs()->count(); ++tab)
        all.append(d.tabs()->tabText(tab));
    return all;
}

QString counterText(const QWidget &wave)
{
    for (const QLabel *label : wave.findChildren<QLabel *>()) {
        if (label->text().contains(QLatin1String("Autorun")))
            return label->text().trimmed();
    }
    return {};
}

/// The samples of a window as a data file has them.
QByteArray dataFile(const TestDesign &design, const QByteArray &attributes, int trigger)
{
    QByteArray text = "<WaveData><Window " + attributes + "><TriggerPosition>" +
                      QByteArray::number(trigger) + "</TriggerPosition><Signals>";
    for (int signal = 0; signal < design.signalCount(); ++signal) {
        text += "<Signal id=\"" + QByteArray::number(signal) + "\" name=\"" +
                design.name(signal).toUtf8() + "\" text=\"\">";
        for (int sample = 0; sample < design.amount; ++sample)
            text += design.level(signal, sample) ? '1' : '0';
        text += "</Signal>";
    }
    return text + "</Signals></Window></WaveData>";
}

QByteArray projectFile(const QString &keo, const QString &data)
{
    return "KEO_FILE=" + keo.toUtf8() + "\nDATA_FILE=" + data.toUtf8() + '\n';
}

/// All that a viewer shows, as text.
QString contentsOf(const WaveMonitorWidget &wave)
{
    QDomDocument document;
    document.appendChild(wave.saveWindow(document));
    return document.toString();
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

void tst_LiteRoad::captures_data()
{
    QTest::addColumn<TestDesign>("design");
    const auto row = [](const char *name, const auto &change) {
        TestDesign design = liteDesign();
        change(design);
        QTest::newRow(name) << design;
    };
    // Some devices store the newest sample first, and only under a .keo.
    row("late device", [](TestDesign &design) { design.device = "KR-H"; });
    row("late device, zeo", [](TestDesign &design) {
        design.device = "KR-H";
        design.extension = "zeo";
    });
    row("other device", [](TestDesign &design) { design.device = "KX-1"; });
    row("has samples already", [](TestDesign &design) { design.initData = true; });
    row("last section not full", [](TestDesign &design) {
        design.amount = 300;
        design.coreIndex = 2;
        design.noise = 0;
    });
}

void tst_LiteRoad::captures()
{
    QFETCH(TestDesign, design);
    Desktop d(design);
    d.open();
    QCOMPARE(titles(d), QStringList("Trigger"));
    QVERIFY(d.tool("Start")->isEnabled() && d.tool("Auto")->isEnabled());
    d.capture();
    QCOMPARE(titles(d),
             (QStringList{"Trigger", QStringLiteral("core %1 window 0").arg(design.coreIndex)}));
    QCOMPARE(d.tabs()->currentIndex(), 1);
    QVERIFY(isStimulus(d.wave(1), design, 0));
    // The next one takes over, under the names and the zoom that the user chose.
    d.wave(1)->setZoom(0.25);
    d.capture();
    QCOMPARE(d.tabs()->count(), 2);
    QVERIFY(isStimulus(d.wave(1), design, design.amount));
    QCOMPARE(d.wave(1)->zoomRate(), 0.25);
    QVERIFY(d.boxes.seen.isEmpty());
}

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

    // The user renames a signal; the next capture belongs to it.
    QDomDocument document;
    QDomElement window = d.wave(1)->saveWindow(document);
    window.firstChildElement("Signals").firstChildElement("Signal").setAttribute("text", "top bit");
    d.wave(1)->loadWindow(window);
    d.capture();
    QCOMPARE(d.wave(1)->signalMap()[0].text, "top bit");

    const QString project = d.directory.filePath("run.analyzer_prj");
    const QString data = d.directory.filePath("run.xml");
    saveAs(d, d.directory.filePath("run"));
    const QByteArray description = bytesOf(d.file());
    QVERIFY(description.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<KEO_CONFIG>\n"
                                   "    <Version>3.0</Version>\n    <Mode>Lite</Mode>\n"
                                   "    <KoCore_Lite index=\"0\" sample_clock=\"clk\" "));
    QVERIFY(description.contains("<Signal text=\"top bit\">count[15]</Signal>"));
    QVERIFY(!description.contains("KEO_ID"));
    QVERIFY(bytesOf(data).contains("\n    <Window index=\"0\">\n"));
    QCOMPARE(QSettings(project, QSettings::IniFormat).value("KEO_FILE").toString(), d.file());
    QCOMPARE(QSettings(project, QSettings::IniFormat).value("DATA_FILE").toString(), data);

    // Our own save is a change on disk like any other.
    QTRY_VERIFY(banner(d));

    // Opened again, it shows the same under the number of the window.
    const QString saved = contentsOf(*d.wave(1));
    d.window->openFile(project, {}, design.device, {});
    QCOMPARE(titles(d), (QStringList{"Trigger", "Window 0"}));
    QCOMPARE(contentsOf(*d.wave(1)), saved);
    QVERIFY(!banner(d));

    // Its paths stand crosswise: what is saved now has the samples in the project file.
    d.wave(1)->setZoom(0.5);
    d.click("Save...");
    QVERIFY(bytesOf(project).startsWith("<?xml") && bytesOf(project).contains("<WaveData>"));
    QCOMPARE(QSettings(data, QSettings::IniFormat).value("KEO_FILE").toString(), d.file());
    QCOMPARE(QSettings(data, QSettings::IniFormat).value("DATA_FILE").toString(), project);

    // The name that the user knows still opens it, and the next save puts both files right.
    d.window->openFile(project, {}, design.device, {});
    QCOMPARE(titles(d), (QStringList{"Trigger", "Window 0"}));
    d.click("Save...");
    QVERIFY(bytesOf(data).contains("<WaveData>"));
    QCOMPARE(QSettings(project, QSettings::IniFormat).value("DATA_FILE").toString(), data);
    d.window->openFile(project, {}, design.device, {});
    QCOMPARE(titles(d), (QStringList{"Trigger", "Window 0"}));
    d.wave(1)->setZoom(0.5);
    d.click("Save...");

    // Under a name that tells what it is, the file with the paths opens again.
    const QString renamed = d.directory.filePath("again.analyzer_prj");
    QVERIFY(QFile::rename(data, renamed));
    d.window->openFile(renamed, {}, design.device, {});
    QCOMPARE(titles(d), (QStringList{"Trigger", "Window 0"}));
    d.wave(1)->setZoom(0.5);

    // A capture takes the place of the saved waves, and their arrangement.
    d.capture();
    QCOMPARE(titles(d), (QStringList{"Trigger", "core 0 window 0"}));
    QVERIFY(isStimulus(d.wave(1), design, 2 * design.amount));
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
        QVERIFY(!d.tool("Start")->isEnabled() && !d.find<QAction>("openAction")->isEnabled());
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
        QCOMPARE(titles(d), QStringList("Trigger"));
    }
    QCOMPARE(d.boxes.seen.size(), captured);

    // A closed project forgets the settings.
    d.open();
    QVERIFY(check->isChecked());
    QCOMPARE(d.find<QSpinBox>("spinTriggerDelay")->value(), 0);
}

void tst_LiteRoad::autoRounds()
{
    TestDesign design = liteDesign();
    design.amount = 64;
    Desktop d(design);
    d.open();
    d.click("Auto");
    QVERIFY(!d.tool("Force Trigger")->isEnabled());
    QTRY_COMPARE_WITH_TIMEOUT(d.tabs()->count(), 2, kCaptureTime);
    QVERIFY(!waitingTip());
    const QPointer<WaveMonitorWidget> wave = d.wave(1);
    QCOMPARE(counterText(*wave), "Autorun Counter: 1");
    QTRY_COMPARE_WITH_TIMEOUT(counterText(*wave), "Autorun Counter: 3", kCaptureTime);
    QVERIFY(isStimulus(wave, design, 2 * design.amount));
    d.click("Stop");
    QVERIFY(wave && !d.isBusy() && d.tool("Save...")->isEnabled());
    QVERIFY(d.boxes.seen.isEmpty());
    d.capture(); // and nothing of Auto is left
    QCOMPARE(counterText(*d.wave(1)), QString());
}

void tst_LiteRoad::longWait_data()
{
    QTest::addColumn<QString>("fault");
    QTest::newRow("slow clock") << QString();
    QTest::newRow("answers lost")
        << R"([{ "at": "READ_START_REG", "nth": "every", "do": "lost" }])";
    QTest::newRow("server hangs") << R"([{ "at": "READ_START_REG", "nth": 1, "do": "hang" }])";
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

void tst_LiteRoad::errors_data()
{
    QTest::addColumn<int>("result");
    QTest::addColumn<QString>("text");
    QTest::newRow("not programmed") << -20 << "Device does not load fs file yet.";
    QTest::newRow("not opened") << 1 << "Open device failed.";
    QTest::newRow("unknown") << 7 << "Unknown device error.";
    QTest::newRow("no cable") << 0 << "Can not connect with JTAG Server!";
}

void tst_LiteRoad::errors()
{
    QFETCH(int, result);
    QFETCH(QString, text);
    TestDesign design = liteDesign();
    if (result != 0)
        design.faults =
            QStringLiteral(R"([{ "at": "OPEN", "do": "result", "value": %1 }])").arg(result);
    Desktop d(design);
    d.open();
    if (result == 0)
        JtagSession::instance()->disconnectAll();
    d.press(Qt::Key_F1);
    QTRY_COMPARE_WITH_TIMEOUT(d.boxes.seen, QStringList("Error: " + text), kCaptureTime);
    QVERIFY(!d.isBusy() && !waitingTip() && d.tool("Start")->isEnabled());
    QCOMPARE(d.tabs()->count(), 1);
}

// A poll without bits counts as done, and a memory without a row says so, once.
void tst_LiteRoad::answersWithoutBits()
{
    FakeServer server;
    server.leadingBits = 0;
    server.answer = [](const QVariantMap &request, QVariantMap reply) {
        const QString operation = request["OPRATE"].toString();
        if (operation == "READ_START_REG" || operation == "READ_RAM")
            reply["DATA"] = QBitArray();
        return FakeServer::Replies{reply};
    };
    Desktop d(liteDesign());
    JtagSession::instance()->disconnectAll();
    QVERIFY(JtagSession::instance()->connectServer({"fake", server.name()}, 1000));
    d.open();
    d.press(Qt::Key_F1);
    QTRY_COMPARE_WITH_TIMEOUT(d.boxes.seen, QStringList("Error: No data."), kCaptureTime);
    QTRY_VERIFY(d.isIdle());
    QCOMPARE(titles(d), QStringList("Trigger"));
}

void tst_LiteRoad::opensWhatItCan_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("box");
    QTest::addColumn<QStringList>("tabs");
    const TestDesign design = liteDesign();
    const QStringList closed;
    const QStringList open{"Trigger"};
    QTest::newRow("two windows") << dataFile(design, "index=\"3\"", 0) << QString()
                                 << QStringList{"Trigger", "Window 3"};
    QTest::newRow("no number") << dataFile(design, {}, 0) << QString() << open;
    const QString mismatch = "Warning: Data file miss match the project";
    QTest::newRow("trigger inside") << dataFile(design, "index=\"0\"", 16) << mismatch << open;
    TestDesign other = design;
    other.noise = 7;
    QTest::newRow("other signals") << dataFile(other, "index=\"0\"", 0) << mismatch << open;
    QTest::newRow("no file") << QByteArray()
                             << "Warning: Cached data file specified in project file is missing."
                             << closed;
    QTest::newRow("no xml") << QByteArray("<WaveData><Window></WaveData>")
                            << "Error: Error when reading data file." << closed;
    QTest::newRow("no core") << QByteArray("keo") << "Error: Invalid KEO file specified in project."
                             << closed;
}

// A lite session is its waves: what has none to show is not opened.
void tst_LiteRoad::opensWhatItCan()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, box);
    QFETCH(QStringList, tabs);
    Desktop d(liteDesign());
    const QString dataPath = d.directory.filePath("saved.xml");
    const QString project = d.directory.filePath("saved.analyzer_prj");
    if (!data.isEmpty())
        write(dataPath, data);
    if (data == "keo")
        write(d.file(), "<KEO_CONFIG><Version>3.0</Version><Mode>Lite</Mode></KEO_CONFIG>");
    write(project, projectFile(d.file(), dataPath));
    d.window->openFile(project, {}, d.design.device, {});
    QCOMPARE(titles(d), tabs);
    QCOMPARE(d.boxes.seen.size(), box.isEmpty() ? 0 : 1);
    if (!box.isEmpty())
        QVERIFY2(d.boxes.seen.first().startsWith(box), qPrintable(d.boxes.seen.first()));
    d.open(); // and there is a way on, unless the description itself is bad
    QCOMPARE(d.tabs()->count(), data == "keo" ? 0 : 1);
}

// Standard and lite after one another, each with waves and a banner: the window holds what belongs
// to the open one and nothing else, and does not grow.
void tst_LiteRoad::bothKindsInTurn()
{
    const TestDesign design = liteDesign();
    Desktop d(design);
    TestDesign standard;
    standard.amount = 32;
    const QDir folder(d.directory.filePath("standard"));
    QVERIFY(folder.mkpath("."));
    standard.write(folder.path());
    const QString keo = folder.filePath("design.keo");
    const QString session = folder.filePath("saved.analyzer_prj");
    write(folder.filePath("saved.xml"),
          dataFile(standard, "core=\"0\" index=\"0\"", standard.position));
    write(session, projectFile(keo, folder.filePath("saved.xml")));
    const auto touch = [](const QString &path) { write(path, bytesOf(path) + ' '); };
    const auto toolTexts = [&] {
        QStringList texts;
        for (const QAction *action : d.find<QToolBar>("toolBar")->actions())
            texts.append(action->text());
        return texts;
    };

    QStringList tools;
    qsizetype objects = 0;
    for (int round = 0; round < 4; ++round) {
        d.open();
        QCOMPARE(titles(d), QStringList("Trigger"));
        d.capture();
        QCOMPARE(d.tabs()->count(), 2);
        touch(d.file());
        QTRY_VERIFY(banner(d));

        d.window->openFile(session, {}, standard.device, {});
        QCOMPARE(titles(d), (QStringList{"Configuration", "core 0 Window 0"}));
        QVERIFY(isStimulus(d.wave(1), standard, 0));
        QCOMPARE(d.window->findChildren<WaveMonitorWidget *>().size(), 1);
        QVERIFY(!d.isBusy() && d.tool("Save...")->isEnabled());
        touch(d.file()); // nobody's business now
        touch(keo);
        QTRY_VERIFY(banner(d));
        QCOMPARE(d.tabs()->widget(0)->findChildren<ReloadBanner *>().size(), 1);

        // The lite one again, and closed from its banner.
        d.open();
        QVERIFY(!banner(d));
        QCOMPARE(titles(d), QStringList("Trigger"));
        QVERIFY(!d.tool("Save...")->isEnabled() && !d.tool("Export")->isEnabled());
        if (round == 0)
            tools = toolTexts();
        QCOMPARE(toolTexts(), tools);
        const QByteArray description = bytesOf(d.file());
        QVERIFY(QFile::remove(d.file()));
        QTRY_VERIFY(banner(d));
        QTest::mouseClick(banner(d)->findChild<QPushButton *>(), Qt::LeftButton);
        QTRY_VERIFY(!banner(d));
        QCOMPARE(d.tabs()->count(), 0);
        QCOMPARE(toolTexts(), (QStringList{"Open...", ""}));
        write(d.file(), description);

        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(d.window->findChildren<WaveMonitorWidget *>().isEmpty());
        // Built once, and from then on used again.
        if (round == 1)
            objects = d.window->findChildren<QObject *>().size();
        if (round > 1)
            QCOMPARE(d.window->findChildren<QObject *>().size(), objects);
    }

    // A change during a capture is told after it, once; Reload takes the waves away.
    d.open();
    d.find<QCheckBox>("checkAutoTrigger")->setChecked(false);
    d.press(Qt::Key_F1);
    touch(d.file());
    QTest::qWait(300);
    QVERIFY(!banner(d) && d.isBusy());
    d.click("Force Trigger");
    QTRY_VERIFY(banner(d) && !d.isBusy() && d.tabs()->count() == 2);
    QTest::mouseClick(banner(d)->findChild<QPushButton *>(), Qt::LeftButton);
    QTRY_VERIFY(!banner(d));
    QCOMPARE(titles(d), QStringList("Trigger"));
    QVERIFY(d.find<QCheckBox>("checkAutoTrigger")->isChecked());
}

// A project that goes during a run leaves it to its connection.
void tst_LiteRoad::closeDuringCapture()
{
    const QString question = "Exit: Task is still running, do you want to exit?";
    TestDesign design = liteDesign();
    design.samplesPerSecond = 1;
    Desktop d(design);
    d.open();
    d.press(Qt::Key_F1);
    QTRY_VERIFY(d.requests("READ_START_REG") > 0);
    d.boxes.answer = QMessageBox::No;
    QVERIFY(!d.window->close());
    QVERIFY(d.window->isVisible() && d.isBusy() && waitingTip());
    d.boxes.answer = QMessageBox::Yes;
    QVERIFY(d.window->close());
    QCOMPARE(d.boxes.seen, (QStringList{question, question}));
    QVERIFY(!waitingTip() && !JtagSession::instance()->hasConnection());
    QTest::qWait(100);
    QCOMPARE(d.tabs()->count(), 0);
    QCOMPARE(d.requests("CLOSE"), 0);
}

KEO_WIDGET_TEST_MAIN(tst_LiteRoad)
#include "tst_literoad.moc"
