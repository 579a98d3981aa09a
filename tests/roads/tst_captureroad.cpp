// From a core description to samples: the program's own loader, image, link and cutting against a
// simulated board that shares no code with them, through a real server process and socket. Every
// signal and sample of every window is compared with the design's formula.

#include <capture/standarddatamanager.h>
#include <link/jtagsession.h>
#include <project/capturedisplay.h>
#include <shell/serverlauncher.h>
#include <support/testdesign.h>
#include <support/testmain.h>

#include <QProcess>
#include <QSignalSpy>

using namespace KEO;

class tst_CaptureRoad : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void samplesAreTheStimulus_data();
    void samplesAreTheStimulus();
};

namespace {

struct Window
{
    int number = 0;
    QList<WaveMonitor::SignalElement> elements;
};

// The number that the bus shows at a sample: which sample of the stimulus it is.
int countAt(const QList<WaveMonitor::SignalElement> &elements, qsizetype sample)
{
    int count = 0;
    for (int bit = 0; bit < 16; ++bit)
        count = count << 1 | int(elements.at(bit).data.testBit(sample));
    return count;
}

} // namespace

void tst_CaptureRoad::samplesAreTheStimulus_data()
{
    QTest::addColumn<bool>("dynamic");
    QTest::addColumn<QString>("extension");
    QTest::addColumn<QString>("device");
    QTest::addColumn<int>("noise");
    QTest::addColumn<int>("depth");
    QTest::addColumn<int>("windows");
    QTest::addColumn<int>("amount");
    QTest::addColumn<int>("position");

    const QString listed = QStringLiteral("KR-R");
    const QString other = QStringLiteral("KX-1");
#ifdef KEO_DEEP_CAPTURE
    QTest::newRow("65,536 samples") << true << "keo" << listed << 8 << 65536 << 1 << 65536 << 30000;
#else
    for (const bool dynamic : {false, true}) {
        const char *kind = dynamic ? "dynamic" : "static";
        for (const char *extension : {"keo", "zeo"}) {
            for (const QString &device : {listed, other}) {
                QTest::addRow("%s, %s, %s", kind, extension, qPrintable(device))
                    << dynamic << extension << device << 8 << 4096 << 1 << 256 << 16;
            }
        }
        QTest::addRow("%s, 32 samples, position 0", kind)
            << dynamic << "keo" << other << 3 << 4096 << 1 << 32 << 0;
        QTest::addRow("%s, 32 samples, largest position", kind)
            << dynamic << "zeo" << listed << 3 << 4096 << 1 << 32 << 23;
        QTest::addRow("%s, largest position on a listed model", kind)
            << dynamic << "keo" << listed << 20 << 4096 << 1 << 1024 << 1015;
        QTest::addRow("%s, position 0 on a listed model", kind)
            << dynamic << "keo" << listed << 20 << 4096 << 1 << 512 << 0;
        QTest::addRow("%s, three windows", kind)
            << dynamic << "keo" << listed << 90 << 1024 << 3 << 256 << 100;
        QTest::addRow("%s, eight windows", kind)
            << dynamic << "keo" << other << 0 << 1024 << 8 << 128 << 119;
    }
    QTest::newRow("255 signals") << true << "zeo" << other << 239 << 4096 << 1 << 1024 << 512;
#endif
}

void tst_CaptureRoad::samplesAreTheStimulus()
{
    QFETCH(bool, dynamic);
    QFETCH(QString, extension);
    QFETCH(QString, device);
    QFETCH(int, noise);
    QFETCH(int, depth);
    QFETCH(int, windows);
    QFETCH(int, amount);
    QFETCH(int, position);
    TestDesign design;
    design.dynamic = dynamic;
    design.extension = extension;
    design.device = device;
    design.noise = noise;
    design.storageDepth = depth;
    design.windows = windows;
    design.amount = amount;
    design.position = position;
    QTemporaryDir directory;
    design.write(directory.path());
    qputenv("SIGNALSCOPE_BOARD", directory.filePath("board.json").toLocal8Bit());

    ServerProcesses processes;
    const QList<JtagConnection> started =
        launchServers(processes, QStringLiteral(KEO_BURNER_DIR), serverTable().mid(0, 1));
    QCOMPARE(started.size(), 1);
    JtagSession &session = *JtagSession::instance();
    QVERIFY(session.connectServers(started).isEmpty());
    QVERIFY(session.selectCable(started.first().name));

    KeoStandardDataManager manager;
    QString id;
    QVERIFY(manager.load(directory.filePath("design." + extension), id));
    manager.setDeviceName(device);
    QList<Window> captured;
    connect(&manager, &KeoStandardDataManager::readRamComplete, this, [&](int core, int window) {
        captured.append(
            {window, extractSignalData(manager.coreByIndex(core), manager.rawWindow(window))});
    });
    QSignalSpy complete(&manager, &KeoStandardDataManager::triggerComplete);
    manager.openDevice({0});
    manager.start({0});
    QTRY_COMPARE_WITH_TIMEOUT(complete.size(), 1, 120000);
    QCOMPARE(complete.first().first().toInt(), 0);
    session.disconnectAll();
    killServers(processes);

    QCOMPARE(captured.size(), windows);
    qint64 earliest = 0; // sample at which the window may begin
    for (int window = 0; window < windows; ++window) {
        const Window &got = captured.at(window);
        QCOMPARE(got.number, window);
        QCOMPARE(got.elements.size(), design.signalCount());
        // Each window takes the first trigger that has enough samples before it.
        const qint64 trigger = design.firstTrigger(earliest + position);
        QCOMPARE(countAt(got.elements, position), int(trigger % TestDesign::kLength));
        for (int signal = 0; signal < design.signalCount(); ++signal) {
            const QBitArray &data = got.elements.at(signal).data;
            QCOMPARE(got.elements.at(signal).name, design.name(signal));
            QCOMPARE(data.size(), amount);
            for (int sample = 0; sample < amount; ++sample) {
                if (data.testBit(sample) != design.level(signal, trigger - position + sample))
                    QFAIL(qPrintable(QStringLiteral("window %1, %2, sample %3")
                                         .arg(window)
                                         .arg(design.name(signal))
                                         .arg(sample)));
            }
        }
        earliest = trigger - position + amount;
    }
}

KEO_TEST_MAIN(tst_CaptureRoad)
#include "tst_captureroad.moc"
