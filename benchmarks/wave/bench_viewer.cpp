// What a user waits for in the whole viewer, 1920 x 1000 with 33 rows showing.
#include <wave/common/viewergeometry.h>
#include <wave/ruler/rulerview.h>
#include <wave/tree/signaltreeview.h>
#include <wave/view/waveview.h>
#include <wave/wavemonitorwidget.h>

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QFile>
#include <QGraphicsScene>
#include <QMenu>
#include <QMouseEvent>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QTimer>

#include <memory>

using namespace WaveMonitor;

namespace {

constexpr QSize kSize(1920, 1050); // 1000 for the rows

QBitArray randomBits(int samples, quint32 seed)
{
    QRandomGenerator random(seed);
    QByteArray bytes(samples / 8, Qt::Uninitialized);
    for (char &byte : bytes)
        byte = char(random.generate());
    return QBitArray::fromBits(bytes.constData(), samples);
}

struct Capture
{
    Capture(int rows, int busCount, int samples)
    {
        for (int id = 0; id < rows + 8 * busCount; ++id)
            elements.append(
                {id, QStringLiteral("net[%1]").arg(id), {}, randomBits(samples, quint32(id + 7))});
        plainRows = rows;
    }

    void fill(WaveMonitorWidget &viewer)
    {
        for (int i = 0; i < plainRows; ++i)
            viewer.addSignal(elements[i]);
        for (qsizetype i = plainRows; i < elements.size(); i += 8) {
            BusElement bus{QStringLiteral("bus"), {}, {}};
            for (qsizetype member = i; member < i + 8; ++member)
                bus.signals.append(&elements[member]);
            viewer.addBus(bus);
        }
        viewer.setTriggerPosition(100);
        viewer.setTitle(0, 0);
    }

    QList<SignalElement> elements;
    int plainRows;
};

/// Counts the frames of a widget.
class FrameCounter final : public QObject
{
public:
    explicit FrameCounter(QWidget *widget) { widget->installEventFilter(this); }
    bool eventFilter(QObject *, QEvent *event) override
    {
        frames += event->type() == QEvent::Paint;
        return false;
    }
    int frames = 0;
};

void settle()
{
    for (int i = 0; i < 4; ++i)
        QCoreApplication::processEvents();
}

void plantMarker(RulerView *ruler, int x)
{
    QTimer::singleShot(0, ruler, [] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QKeyEvent key(QEvent::KeyPress, Qt::Key_Return, {});
        menu->setActiveAction(menu->actions().constFirst());
        QApplication::sendEvent(menu, &key);
    });
    const QPoint place(x, 3);
    QContextMenuEvent event(QContextMenuEvent::Mouse, place, ruler->viewport()->mapToGlobal(place));
    QApplication::sendEvent(ruler->viewport(), &event);
}

void sendMouse(QWidget *target, QEvent::Type type, const QPoint &place, Qt::MouseButton button)
{
    QMouseEvent event(type, place, target->mapToGlobal(place), button, Qt::LeftButton, {});
    QApplication::sendEvent(target, &event);
}

void open(benchmark::State &state)
{
    Capture capture(256, 32, 65536);
    for (auto _ : state) {
        WaveMonitorWidget viewer(16, nullptr);
        viewer.resize(kSize);
        const FrameCounter counter(viewer.findChild<WaveView *>()->viewport());
        capture.fill(viewer);
        viewer.show();
        while (counter.frames == 0)
            QCoreApplication::processEvents();
        settle();
        state.counters["frames"] = counter.frames;
        if (viewer.findChild<WaveView *>()->scene()->items().size() != 256 + 32 * 9)
            state.SkipWithError("not all rows stand");
    }
}
BENCHMARK(open)->Unit(benchmark::kMillisecond);

void dragMarkerStep(benchmark::State &state)
{
    Capture capture(300, 0, 65536);
    WaveMonitorWidget viewer(16, nullptr);
    viewer.resize(kSize);
    capture.fill(viewer);
    viewer.show();
    viewer.setZoom(1.0 / double(state.range(0)));
    settle();
    auto *ruler = viewer.findChild<RulerView *>();
    auto *waves = viewer.findChild<WaveView *>();
    for (int i = 0; i < 100; ++i)
        plantMarker(ruler, 5 + 15 * i);
    settle();
    if (ruler->timeMarkers().size() != 100)
        state.SkipWithError("not all markers stand");

    // The newest marker, by the middle of its flag.
    const int x = ruler->mapFromScene(ruler->timeMarker()->clock() * CLOCK_PITCH, 0).x();
    sendMouse(ruler->viewport(), QEvent::MouseButtonPress, {x + 2, 20}, Qt::LeftButton);
    settle();
    const FrameCounter counter(waves->viewport());
    int step = 0;
    for (auto _ : state) {
        sendMouse(ruler->viewport(), QEvent::MouseMove, {x - 60 * (++step % 20), 20}, Qt::NoButton);
        settle();
    }
    if (counter.frames < step)
        state.SkipWithError("steps went unseen");
}
BENCHMARK(dragMarkerStep)->Arg(1)->Arg(16)->Arg(256)->Unit(benchmark::kMillisecond);

void zoomStep(benchmark::State &state)
{
    Capture capture(256, 32, 65536);
    WaveMonitorWidget viewer(16, nullptr);
    viewer.resize(kSize);
    capture.fill(viewer);
    viewer.show();
    settle();
    auto *waves = viewer.findChild<WaveView *>();
    const FrameCounter counter(waves->viewport());
    int step = 0;
    for (auto _ : state) {
        viewer.setZoom(++step % 2 ? 1.0 / 64 : 1.0 / 128);
        settle();
    }
    if (counter.frames < step)
        state.SkipWithError("steps went unseen");
}
BENCHMARK(zoomStep)->Unit(benchmark::kMillisecond);

#ifdef Q_OS_LINUX
qint64 residentBytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toLongLong() * 4096;
}

/// Memory for what is loaded and painted, in multiples of the raw bits, the bits themselves
/// included. The toolkit has shown a viewer before. Run it alone: the heap keeps what others freed.
void memory(benchmark::State &state)
{
    constexpr int signalCount = 256;
    constexpr int samples = 1'048'576;
    for (auto _ : state) {
        {
            Capture warmUp(40, 0, 1024);
            WaveMonitorWidget viewer(16, nullptr);
            viewer.resize(kSize);
            warmUp.fill(viewer);
            viewer.show();
            settle();
        }
        const qint64 before = residentBytes();
        Capture capture(signalCount, 0, samples);
        WaveMonitorWidget viewer(32, nullptr);
        viewer.resize(kSize);
        capture.fill(viewer);
        viewer.show();
        settle();
        for (const double rate : {1.0, 1.0 / 256}) {
            viewer.setZoom(rate);
            settle();
            QScrollBar *bar = viewer.findChild<WaveView *>()->verticalScrollBar();
            for (int y = 0; y <= bar->maximum(); y += 900) {
                bar->setValue(y);
                settle();
            }
        }
        const double raw = double(signalCount) * samples / 8;
        state.counters["timesRaw"] = double(residentBytes() - before) / raw;
    }
}
BENCHMARK(memory)->Iterations(1)->Unit(benchmark::kMillisecond);
#endif

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    if (qEnvironmentVariableIsEmpty("QT_LOGGING_RULES"))
        qputenv("QT_LOGGING_RULES", "*.debug=false");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
