// From a core description to samples: the program's own loader, image, link and cutting against a
// simulated board that shares no code with them, through a real server process and socket. Every
// signal and sample of every window is compared with the design's formula.

#include <capture/standarddatamanager.h>
#include <design/capturedisplay.h>
#include <link/jtagsession.h>
#include <support/benchserver.h>
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
    addColumns<TestDesign>({"design"});
    const QString listed = "KR-R"; // a model with a rule of its own
    const QString other = "KX-1";
    const auto row = [](const QString &name, const TestDesign &design) {
        QTest::newRow(qPrintable(name)) << design;
    };
#ifdef KEO_DEEP_CAPTURE
    row("65,536 samples", {.dynamic = true,
                           .device = listed,
                           .storageDepth = 65536,
                           .amount = 65536,
                           .position = 30000});
#else
    for (const bool dynamic : {false, true}) {
        const QString kind = dynamic ? "dynamic, " : "static, ";
        for (const char *extension : {"keo", "zeo"}) {
            for (const QString &device : {listed, other})
                row(kind + extension + ", " + device,
                    {.dynamic = dynamic, .extension = extension, .device = device});
        }
        row(kind + "32 samples, position 0",
            {.dynamic = dynamic, .device = other, .amount = 32, .position = 0});
        row(kind + "32 samples, largest position", {.dynamic = dynamic,
                                                    .extension = "zeo",
                                                    .device = listed,
                                                    .amount = 32,
                                                    .position = 23});
        row(kind + "largest position on a listed model",
            {.dynamic = dynamic, .device = listed, .noise = 20, .amount = 1024, .position = 1015});
        row(kind + "position 0 on a listed model",
            {.dynamic = dynamic, .device = listed, .noise = 20, .amount = 512, .position = 0});
        row(kind + "three windows", {.dynamic = dynamic,
                                     .device = listed,
                                     .noise = 90,
                                     .storageDepth = 1024,
                                     .windows = 3,
                                     .position = 100});
        row(kind + "eight windows", {.dynamic = dynamic,
                                     .device = other,
                                     .noise = 0,
                                     .storageDepth = 1024,
                                     .windows = 8,
                                     .amount = 128,
                                     .position = 119});
    }
    row("255 signals", {.dynamic = true,
                        .extension = "zeo",
                        .device = other,
                        .noise = 239,
                        .amount = 1024,
                        .position = 512});
#endif
}

void tst_CaptureRoad::samplesAreTheStimulus()
{
    QFETCH(TestDesign, design);
    QTemporaryDir directory;
    design.write(directory.path());
    qputenv("SIGNALSCOPE_BOARD", directory.filePath("board.json").toLocal8Bit());

    ServerProcesses processes;
    startBenchServer(processes);
    JtagSession &session = *JtagSession::instance();
    QVERIFY(session.selectCable(serverTable().first().connection.name));

    KeoStandardDataManager manager;
    QString id;
    QVERIFY(manager.load(directory.filePath("design." + design.extension), id));
    manager.setDeviceName(design.device);
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

    QCOMPARE(captured.size(), design.windows);
    qint64 earliest = 0; // sample at which the window may begin
    for (int window = 0; window < design.windows; ++window) {
        const Window &got = captured.at(window);
        QCOMPARE(got.number, window);
        QCOMPARE(got.elements.size(), design.signalCount());
        // Each window takes the first trigger that has enough samples before it.
        const qint64 trigger = design.firstTrigger(earliest + design.position);
        QCOMPARE(countAt(got.elements, design.position), int(trigger % TestDesign::kLength));
        for (int signal = 0; signal < design.signalCount(); ++signal) {
            const QBitArray &data = got.elements.at(signal).data;
            QCOMPARE(got.elements.at(signal).name, design.name(signal));
            QCOMPARE(data.size(), design.amount);
            for (int sample = 0; sample < design.amount; ++sample) {
                if (data.testBit(sample) !=
                    design.level(signal, trigger - design.position + sample))
                    QFAIL(qPrintable(QStringLiteral("window %1, %2, sample %3")
                                         .arg(window)
                                         .arg(design.name(signal))
                                         .arg(sample)));
            }
        }
        earliest = trigger - design.position + design.amount;
    }
}

KEO_TEST_MAIN(tst_CaptureRoad)
#include "tst_captureroad.moc"
