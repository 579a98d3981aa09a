// Reading a window of 65,536 samples of 32 signals from a simulated server: what the server itself
// takes, asked for everything at once, and the manager with so many sections in flight; and the
// time from a trigger until the reading begins.
#include <capture/bits.h>
#include <capture/capturepackets.h>
#include <capture/registermap.h>
#include <capture/shiftword.h>
#include <capture/standarddatamanager.h>
#include <link/jtagsession.h>
#include <link/packetcodec.h>
#include <support/benchserver.h>
#include <support/files.h>
#include <support/testdesign.h>

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QTimer>
#include <QtEndian>

#include <algorithm>

using namespace KEO;

namespace {

constexpr int kSamples = 65'536;
constexpr int kSections = kSamples / CaptureManager::kSectionRows;

/// A board whose core has captured before it is asked for its trigger.
struct Board
{
    explicit Board(bool fires = true)
    {
        TestDesign design{.noise = 16, .storageDepth = kSamples, .amount = kSamples};
        design.fires = fires;
        design.samplesPerSecond = 1'000'000'000;
        design.write(directory.path());
        qputenv("SIGNALSCOPE_BOARD", directory.filePath("board.json").toLocal8Bit());
        startBenchServer(servers);
        JtagSession::instance()->selectCable(serverTable().first().connection.name);
        QString id;
        manager.load(directory.filePath("design.keo"), id);
    }
    ~Board()
    {
        JtagSession::instance()->disconnectAll();
        killServers(servers);
    }

    /// Captures once at that pace; nanoseconds from the state Reading until all is there, or 0.
    qint64 capture(const CapturePace &pace)
    {
        manager.setPace(pace);
        qint64 taken = 0;
        QElapsedTimer time;
        QEventLoop loop;
        QObject::connect(&manager, &CaptureManager::statusChanged, &loop, [&] {
            if (manager.state() == CaptureState::Reading)
                time.start();
        });
        QObject::connect(&manager, &KeoStandardDataManager::readRamComplete, &loop,
                         [&](int, int window) {
                             taken = time.nsecsElapsed();
                             if (manager.rawWindow(window).size() != kSections)
                                 taken = 0;
                         });
        QObject::connect(&manager, &CaptureManager::triggerComplete, &loop, &QEventLoop::quit);
        manager.openDevice({0});
        manager.start({0});
        loop.exec();
        return taken;
    }

    QTemporaryDir directory;
    ServerProcesses servers;
    KeoStandardDataManager manager;
};

/// A client that asks for all sections and then takes what comes.
void serverAlone(benchmark::State &state)
{
    Board board;
    if (board.capture(kEagerPace) == 0)
        return state.SkipWithError("no capture");
    const CoreConfig &core = *board.manager.cores().front();
    const auto frame = [](const CmdPack &pack) { return encodeFrame(pack).value(); };
    QByteArray requests = frame(openPacket({0})) + frame(writeRegisterPacket(coreSelectWord(0)));
    for (int section = 0; section < kSections; ++section) {
        const SectionPlace place{section, kSections, 0};
        const int rows = CaptureManager::kSectionRows;
        CmdPack read = readRamPacket(core.requiredRegisterWidth() * rows + 33, place);
        read["data_request_id"] = 0u;
        requests += frame(burstReadPacket(readBlockWord(section * rows, rows), place));
        requests += frame(read);
    }
    QLocalSocket socket;
    socket.connectToServer(serverTable().first().connection.serverName);
    for (auto _ : state) {
        socket.write(requests);
        QByteArray input;
        for (int replies = -1; replies < kSections;) { // the first one is that of "OPEN"
            if (!socket.waitForReadyRead(5000))
                return state.SkipWithError("replies lacking");
            input += socket.readAll();
            qsizetype at = 0;
            while (input.size() - at >= kLengthFieldSize) {
                const qsizetype size =
                    kLengthFieldSize + qFromBigEndian<qint32>(input.constData() + at);
                if (input.size() - at < size)
                    break;
                at += size;
                ++replies;
            }
            input.remove(0, at);
        }
    }
}
BENCHMARK(serverAlone)->Unit(benchmark::kMillisecond)->UseRealTime();

/// range(0): sections in flight, 0 for any number; range(1): pause before each in ms.
void managerReads(benchmark::State &state)
{
    Board board;
    CapturePace pace = kEagerPace;
    pace.sectionsInFlight = state.range(0) > 0 ? int(state.range(0)) : CapturePace::kUnbounded;
    pace.sectionPause = int(state.range(1));
    for (auto _ : state) {
        const qint64 taken = board.capture(pace);
        if (taken == 0)
            return state.SkipWithError("no samples");
        state.SetIterationTime(double(taken) / 1e9);
    }
}
BENCHMARK(managerReads)
    ->Args({1, 0})
    ->Args({2, 0})
    ->Args({4, 0})
    ->Args({8, 0})
    ->Args({0, 0})
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();
BENCHMARK(managerReads)
    ->Args({0, 50})
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(1);

/// The argument says whether a transcript is written.
void readsWithTranscript(benchmark::State &state)
{
    const QTemporaryDir directory;
    JtagSession &session = *JtagSession::instance();
    if (state.range(0) != 0 && session.startTranscript(directory.filePath("transcript")))
        return state.SkipWithError("no transcript");
    {
        Board board;
        for (auto _ : state) {
            const qint64 taken = board.capture(kEagerPace);
            if (taken == 0)
                return state.SkipWithError("no samples");
            state.SetIterationTime(double(taken) / 1e9);
        }
    }
    session.stopTranscript();
}
BENCHMARK(readsWithTranscript)
    ->ArgName("transcript")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(20); // so that the transcript stays below its limit

/// range(0): ms between polls. The trigger is forced at no particular time.
void triggerSeen(benchmark::State &state)
{
    Board board(false);
    CapturePace pace = kEagerPace;
    pace.pollInterval = int(state.range(0));
    board.manager.setPace(pace);
    double longest = 0;
    quint32 seed = 1;
    for (auto _ : state) {
        seed = seed * 1664525 + 1013904223;
        QEventLoop loop;
        QElapsedTimer time;
        qint64 taken = 0;
        QObject::connect(&board.manager, &CaptureManager::statusChanged, &loop, [&] {
            if (taken == 0 && board.manager.state() == CaptureState::Reading) {
                taken = time.nsecsElapsed();
                loop.quit();
            }
        });
        board.manager.openDevice({0});
        board.manager.start({0});
        QTimer::singleShot(200 + int(seed >> 23), &loop, [&] {
            time.start();
            board.manager.forceTrigger();
        });
        loop.exec();
        board.manager.stop();
        longest = std::max(longest, double(taken) / 1e6);
        state.SetIterationTime(double(taken) / 1e9);
    }
    state.counters["longest_ms"] = longest;
}
BENCHMARK(triggerSeen)
    ->Arg(20)
    ->Arg(500)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(30);

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
