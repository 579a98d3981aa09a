// What a user waits for while the trigger is rehearsed over 256 signals of 65,536 samples, with 16
// match units of 16 bits each and 16 expressions: until an edit shows, and until the rows have
// followed a marker or a scroll bar.
#include <config/coreconfig.h>
#include <design/rehearsalrows.h>
#include <wave/aid/aidtracks.h>
#include <wave/common/viewergeometry.h>
#include <wave/ruler/rulerview.h>
#include <wave/view/waveview.h>
#include <wave/wavemonitorwidget.h>

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QLoggingCategory>
#include <QRandomGenerator>
#include <QScrollBar>

#include <optional>
#include <vector>

using namespace KEO;
using namespace WaveMonitor;

namespace {

constexpr int kSignals = 256;
constexpr int kPortWidth = 16;

QBitArray randomBits(int samples, quint32 seed)
{
    QRandomGenerator random(seed);
    std::vector<quint32> words(size_t(samples) / 32);
    random.generate(words.begin(), words.end());
    return QBitArray::fromBits(reinterpret_cast<const char *>(words.data()), samples);
}

/// A core that compares all of its signals, and a viewer with a window of it.
struct Setup
{
    explicit Setup(int samples) : core(0), viewer(16, nullptr)
    {
        core.dynamic = 1;
        for (int id = 0; id < kSignals; ++id) {
            const QString name = QStringLiteral("net%1").arg(id);
            core.signals.append({name, {}, {}});
            core.triggers[size_t(id / kPortWidth)]->signals.append({name, {}, {}});
            viewer.addSignal({id, name, {}, randomBits(samples, quint32(id) + 1)});
        }
        for (int unit = 0; unit < CoreConfig::kUnits; ++unit) {
            MatchUnit &each = *core.matchUnits[size_t(unit)];
            each.enabled = true;
            each.trigger = core.triggers[size_t(unit)].get();
            each.value0 = QStringLiteral("XXXXXXXXXXXX0110");
            core.expressions.append(QStringLiteral("M%1&(M%2|!M%3)")
                                        .arg(QString::number(unit),
                                             QString::number((unit + 3) % 16),
                                             QString::number((unit + 7) % 16)));
        }
        core.ensureExpressionFlags();
        ports = portSamplesOf(core, viewer.contents());
        viewer.setTriggerPosition(100);
        viewer.resize(1920, 1050);
        viewer.show();
        rehearse();
        settle();
    }
    void rehearse()
    {
        viewer.showAidRows(rehearsalRows(core, *ports, KEO::rehearse(core, *ports)));
    }
    static void settle()
    {
        for (int i = 0; i < 3; ++i)
            QApplication::processEvents();
    }

    CoreConfig core;
    WaveMonitorWidget viewer;
    std::optional<PortSamples> ports;
};

/// Evaluated, shown and painted.
void editOfAUnit(benchmark::State &state)
{
    Setup setup(int(state.range(0)));
    setup.viewer.setZoom(1.0 / 256);
    Setup::settle();
    MatchUnit &unit = *setup.core.matchUnits[3];
    bool flips = false;
    for (auto _ : state) {
        flips = !flips;
        unit.value0 =
            flips ? QStringLiteral("XXXXXXXXXXXX1010") : QStringLiteral("XXXXXXXX01X1X110");
        setup.rehearse();
        Setup::settle();
    }
}
BENCHMARK(editOfAUnit)->Arg(65'536)->Unit(benchmark::kMillisecond);

/// The ruler's marker moves by a sample: all that follows in the viewer.
void markerMoves(benchmark::State &state)
{
    Setup setup(int(state.range(0)));
    if (state.range(1) == 0)
        setup.viewer.hideAidRows();
    auto *ruler = setup.viewer.findChild<RulerView *>();
    ruler->plantMarker(100);
    Setup::settle();
    int sample = 100;
    for (auto _ : state) {
        sample = sample == 110 ? 100 : sample + 1;
        ruler->moveActiveMarker(sample);
        Setup::settle();
    }
}
BENCHMARK(markerMoves)
    ->ArgNames({"samples", "rows"})
    ->ArgsProduct({{65'536, 1'048'576}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

/// A step of the scroll bar at the lowest zoom, where a pixel shows five samples.
void scrolls(benchmark::State &state)
{
    Setup setup(int(state.range(0)));
    if (state.range(1) == 0)
        setup.viewer.hideAidRows();
    setup.viewer.setZoom(1.0 / 256);
    Setup::settle();
    QScrollBar *bar = setup.viewer.findChild<WaveView *>()->horizontalScrollBar();
    int place = 0;
    for (auto _ : state) {
        place = place > 500 ? 0 : place + 7;
        bar->setValue(place);
        Setup::settle();
    }
}
BENCHMARK(scrolls)
    ->ArgNames({"samples", "rows"})
    ->ArgsProduct({{65'536, 1'048'576}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

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
