// How alive the window stays during a capture from the simulated server: Start, wait, read 65,536
// samples, cut them, show them. A timer ticks every millisecond in the program's event loop, and
// "longest_gap_ms" is the longest time between two ticks, less the millisecond: nothing the user
// does is seen meanwhile; "longest_work_ms" is the longest in processor time of the program itself,
// which a busy machine does not lengthen. The time of a stop goes from Stop's being asked for by
// another thread, while sections are read, until the manager is idle. With EVENTLOOP_GAPS=1 in the
// environment every gap above 20 ms is told.
#include <capture/capturepace.h>
#include <link/jtagsession.h>
#include <project/keostandardanalyzerproject.h>
#include <support/benchserver.h>
#include <support/files.h>
#include <support/testdesign.h>

#include <benchmark/benchmark.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLoggingCategory>
#include <QMainWindow>
#include <QStandardPaths>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QToolBar>

#include <algorithm>
#include <ctime>
#include <functional>
#include <utility>

using namespace KEO;

namespace {

constexpr int kSamples = 65'536;
constexpr qint64 kMillisecond = 1'000'000; // ns

enum Design { Small, Wide, WithTruthTable };

/// Runs the event loop until \a isDone says so; false if it never does in that time.
bool waitFor(const std::function<bool()> &isDone, int ms = 5000)
{
    QElapsedTimer time;
    time.start();
    QEventLoop loop;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &loop, [&] {
        if (isDone() || time.hasExpired(ms))
            loop.quit();
    });
    look.start(1);
    loop.exec();
    return isDone();
}

void settle(int ms)
{
    (void)waitFor([] { return false; }, ms);
}

/// A board with a design on disk, behind a server.
struct Board
{
    explicit Board(Design kind)
    {
        TestDesign design{.dynamic = kind == WithTruthTable,
                          .noise = kind == Wide ? 240 : 16,
                          .storageDepth = kSamples,
                          .amount = kSamples};
        design.samplesPerSecond = 1'000'000'000;
        design.write(directory.path());
        if (kind == WithTruthTable)
            useAllUnits();
        qputenv("SIGNALSCOPE_BOARD", directory.filePath("board.json").toLocal8Bit());
        startBenchServer(servers);
    }
    ~Board()
    {
        JtagSession::instance()->disconnectAll();
        killServers(servers);
    }
    QString file() const { return directory.filePath("design.keo"); }

    /// One expression over 16 units: a truth table of 65,536 words.
    void useAllUnits()
    {
        QByteArray text = contentOf(file());
        QByteArray units;
        QByteArray expression = "M0&amp;M1";
        for (int unit = 2; unit < 16; ++unit) {
            const QByteArray number = QByteArray::number(unit);
            units += "<MatchUnit index=\"" + number +
                     "\" enabled=\"1\" match_type=\"0\" func=\"0\" "
                     "value0=\"XXXXXXXXXXXXXXX0\" trigger=\"2\"/>";
            expression += "|M" + number;
        }
        text.replace("</MatchUnits>", units + "</MatchUnits>");
        text.replace("M0&amp;M1", expression);
        putFile(file(), text);
    }

    QTemporaryDir directory;
    ServerProcesses servers;
};

/// A main window with the project object in it.
struct Window
{
    Window(const QString &path, int pause)
    {
        window.setCentralWidget(tabs);
        window.addToolBar(toolBar);
        window.resize(1920, 1050);
        window.show();
        project.tabWidgetGetter = [this] { return tabs; };
        project.toolBarGetter = [this] { return toolBar; };
        project.setupProject(&window);
        if (!project.openFile(path))
            qFatal("does not open");
        project.setDevice(QStringLiteral("KR"), QStringLiteral("KR-A"), {});
        project.setPace({.sectionPause = pause});
        window.activateWindow();
        settle(300);
    }
    ~Window()
    {
        project.closeProject(&window, [] { return true; });
        settle(50);
    }

    void press(const char *action)
    {
        project.findChild<QAction *>(QLatin1String(action))->trigger();
    }
    bool showsWaves() const { return tabs->count() > 1; }

    QMainWindow window;
    QTabWidget *tabs = new QTabWidget;
    QToolBar *toolBar = new QToolBar;
    KeoStandardAnalyzerProject project; // before the window goes
};

/// Watches the gaps between turns of the event loop while it lives.
class Probe
{
public:
    Probe()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { note(); });
        m_time.start();
        m_timer.start(1);
    }
    [[nodiscard]] double longestGap() const { return double(m_longest) / kMillisecond; }
    [[nodiscard]] double longestWork() const { return double(m_longestWork) / kMillisecond; }

private:
    void note()
    {
        const qint64 now = m_time.nsecsElapsed();
        const qint64 gap = now - m_last - kMillisecond;
        m_last = now;
        m_longest = std::max(m_longest, gap);
        const qint64 worked = processorTime();
        const qint64 work = worked - std::exchange(m_worked, worked);
        m_longestWork = std::max(m_longestWork, work);
        if (gap > 20 * kMillisecond && qEnvironmentVariableIsSet("EVENTLOOP_GAPS"))
            fprintf(stderr, "  gap of %.1f ms, %.1f ms of work, %.0f ms after the start\n",
                    double(gap) / kMillisecond, double(work) / kMillisecond,
                    double(now) / kMillisecond);
    }
    /// Of this thread, in ns.
    static qint64 processorTime()
    {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return time.tv_sec * 1'000'000'000LL + time.tv_nsec;
    }

    QTimer m_timer;
    QElapsedTimer m_time;
    qint64 m_last = 0;
    qint64 m_longest = 0;
    qint64 m_worked = processorTime();
    qint64 m_longestWork = 0;
};

/// range(0): the design; range(1): pause before a section in ms.
void wholeCapture(benchmark::State &state)
{
    const Board board{Design(state.range(0))};
    double longest = 0;
    double work = 0;
    for (auto _ : state) {
        Window w(board.file(), int(state.range(1)));
        const Probe probe;
        w.press("startAction");
        if (!waitFor([&] { return w.showsWaves() && !w.project.isBusy(); }, 120'000))
            return state.SkipWithError("no waves");
        settle(500); // all that is put off until later
        longest = std::max(longest, probe.longestGap());
        work = std::max(work, probe.longestWork());
    }
    state.counters["longest_gap_ms"] = longest;
    state.counters["longest_work_ms"] = work;
}

/// Closes the box that Stop shows.
void closeBoxes()
{
    if (auto *box = qobject_cast<QDialog *>(QApplication::activeModalWidget()))
        box->reject();
}

/// range(0): the design; range(1): pause before a section in ms. Asked for by a thread at no
/// particular time.
void stopWhileReading(benchmark::State &state)
{
    const Board board{Design(state.range(0))};
    Window w(board.file(), int(state.range(1)));
    QTimer boxes;
    QObject::connect(&boxes, &QTimer::timeout, &boxes, closeBoxes);
    boxes.start(5);
    double longest = 0;
    quint32 seed = 1;
    for (auto _ : state) {
        w.press("startAction");
        seed = seed * 1664525 + 1013904223;
        const int wait = 700 + int(seed >> 24); // ms; it reads after the first poll
        QElapsedTimer time;
        const std::unique_ptr<QThread> user(QThread::create([&] {
            QThread::msleep(ulong(wait));
            time.start();
            QMetaObject::invokeMethod(
                &w.window, [&] { w.press("stopAction"); }, Qt::QueuedConnection);
        }));
        user->start();
        qint64 taken = 0;
        QTimer watch;
        QObject::connect(&watch, &QTimer::timeout, &watch, [&] {
            if (taken == 0 && user->isFinished() && !w.project.isBusy())
                taken = time.nsecsElapsed();
        });
        watch.start(0);
        if (!waitFor([&] { return taken != 0 && !QApplication::activeModalWidget(); }))
            return state.SkipWithError("not stopped");
        if (w.showsWaves())
            return state.SkipWithError("stopped too late");
        longest = std::max(longest, double(taken) / kMillisecond);
        user->wait();
        state.SetIterationTime(double(taken) / 1e9);
    }
    state.counters["longest_ms"] = longest;
}

BENCHMARK(wholeCapture)
    ->Args({Small, 50})
    ->Args({Small, 1})
    ->Args({Wide, 1})
    ->Args({WithTruthTable, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1);
BENCHMARK(stopWhileReading)
    ->Args({Small, 50})
    ->Args({Wide, 50})
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(16);

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\ndefault.warning=false"));
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
