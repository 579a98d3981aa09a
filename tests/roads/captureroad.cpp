#include "captureroad.h"

#include <capture/standarddatamanager.h>
#include <design/capturedisplay.h>
#include <link/jtagsession.h>
#include <support/benchserver.h>

#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace KEO;

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

void compareWithStimulus(const TestDesign &design)
{
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
    QObject::connect(
        &manager, &KeoStandardDataManager::readRamComplete, &manager, [&](int core, int window) {
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
