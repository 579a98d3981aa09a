// Save and Open of a project in a window, with 256 signals of 65,536 samples, the way the user's
// click takes them. "extra_memory" is the greatest amount of memory that was in use meanwhile, less
// what was in use before, in sizes of the data file.
#include <config/standardconfig.h>
#include <design/datafilereader.h>
#include <design/datafilewriter.h>
#include <design/projectfile.h>
#include <project/keostandardanalyzerproject.h>

#include <benchmark/benchmark.h>

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QMainWindow>
#include <QRandomGenerator>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QToolBar>

#include <algorithm>
#include <vector>

#ifdef __GLIBC__
#include <malloc.h>
#endif

using namespace KEO;
using WaveMonitor::WindowContents;

namespace {

constexpr int kSignals = 256;
constexpr int kSamples = 65'536;

QBitArray randomBits(quint32 seed)
{
    QRandomGenerator random(seed);
    std::vector<quint32> words(kSamples / 32);
    random.generate(words.begin(), words.end());
    return QBitArray::fromBits(reinterpret_cast<const char *>(words.data()), kSamples);
}

/// A project on disk: a core with single signals and buses of 8, half and half.
struct Project
{
    Project()
    {
        CoreList cores;
        cores.push_back(std::make_unique<CoreConfig>(0));
        CoreConfig &core = *cores.back();
        core.capture_amount = kSamples;
        core.storage_depth = kSamples;
        core.trigger_pos = kSamples / 2;
        WindowContents contents;
        contents.setTriggerPosition(core.trigger_pos);
        for (int id = 0; id < kSignals; ++id) {
            const QString name = QStringLiteral("top.u_fifo.net[%1]").arg(id);
            core.signals.append({name, {}, {}});
            contents.addSignal({id, name, {}, randomBits(quint32(id) + 1)});
        }
        for (int bus = 0; bus < kSignals / 16; ++bus) {
            auto row = std::make_unique<WaveMonitor::BusLayoutNode>();
            row->name = QStringLiteral("bus_%1").arg(bus);
            for (int member = 0; member < 8; ++member)
                row->appendChild(contents.layout().takeChild(bus));
            contents.layout().insertChild(bus, std::move(row));
        }
        if (!saveStandardConfigFile(cores, path("design.keo")) ||
            writeDataFile(path("data.xml"), {{0, 0, &contents}}) ||
            writeProjectFile(path("p.analyzer_prj"), {path("design.keo"), path("data.xml")}))
            qFatal("no project");
    }

    QString path(const char *name) const { return directory.filePath(QLatin1String(name)); }
    qint64 dataSize() const { return QFileInfo(path("data.xml")).size(); }

    QTemporaryDir directory;
};

/// A main window with the project object in it.
struct Window
{
    Window()
    {
        window.setCentralWidget(tabs);
        window.addToolBar(toolBar);
        window.resize(1920, 1050);
        window.show();
        QCoreApplication::processEvents();
    }

    void open(const QString &path)
    {
        project.tabWidgetGetter = [this] { return tabs; };
        project.toolBarGetter = [this] { return toolBar; };
        project.setupProject(&window);
        if (!project.openFile(path) || tabs->count() != 2)
            qFatal("does not open");
    }
    void close()
    {
        project.closeProject(&window, {});
        QCoreApplication::processEvents();
    }

    QMainWindow window;
    QTabWidget *tabs = new QTabWidget;
    QToolBar *toolBar = new QToolBar;
    KeoStandardAnalyzerProject project; // before the window goes
};

/// A value of /proc/self/status in bytes.
qint64 processMemory(const char *key)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = status.readAll();
    return text.mid(text.indexOf(key)).simplified().split(' ').value(1).toLongLong() * 1024;
}

/// Watches the memory from here on.
class MemoryPeak
{
public:
    MemoryPeak()
    {
#ifdef __GLIBC__
        malloc_trim(0);
#endif
        QFile reset(QStringLiteral("/proc/self/clear_refs"));
        if (reset.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
            reset.write("5");
        m_before = processMemory("VmRSS:");
    }
    [[nodiscard]] double extra() const
    {
        return double(processMemory("VmHWM:") - m_before);
    }

private:
    qint64 m_before = 0;
};

void save(benchmark::State &state)
{
    const Project project;
    Window w;
    w.open(project.path("p.analyzer_prj"));
    QAction *action = w.project.findChild<QAction *>(QStringLiteral("saveAction"));
    double extra = 0;
    for (auto _ : state) {
        state.PauseTiming();
        QFile::remove(project.path("data.xml"));
        const MemoryPeak peak;
        state.ResumeTiming();
        action->trigger();
        state.PauseTiming();
        extra = std::max(extra, peak.extra());
        state.ResumeTiming();
    }
    const Result<LoadedWindows> windows = loadDataFile(project.path("data.xml"));
    if (!windows || windows->front().contents.signal(255)->data != randomBits(256))
        qFatal("not saved");
    state.counters["extra_memory"] = extra / double(project.dataSize());
}

void open(benchmark::State &state)
{
    const Project project;
    Window w;
    double extra = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const MemoryPeak peak;
        state.ResumeTiming();
        w.open(project.path("p.analyzer_prj"));
        state.PauseTiming();
        extra = std::max(extra, peak.extra());
        w.close();
        state.ResumeTiming();
    }
    state.counters["extra_memory"] = extra / double(project.dataSize());
}

void readFile(benchmark::State &state)
{
    const Project project;
    for (auto _ : state) {
        const Result<LoadedWindows> windows = loadDataFile(project.path("data.xml"));
        if (!windows || windows->front().contents.signalMap().size() != kSignals)
            qFatal("not read");
    }
    state.SetBytesProcessed(state.iterations() * project.dataSize());
}

void writeText(benchmark::State &state)
{
    const Project project;
    const Result<LoadedWindows> windows = loadDataFile(project.path("data.xml"));
    const QList<WindowToSave> list{{0, 0, &windows->front().contents}};
    for (auto _ : state)
        benchmark::DoNotOptimize(dataFileText(list));
    state.SetBytesProcessed(state.iterations() * project.dataSize());
}

BENCHMARK(save)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(1);
BENCHMARK(open)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(1);
BENCHMARK(readFile)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(writeText)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
