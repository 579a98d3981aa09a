// The overview of 65,536 samples in 1920 pixels: drawing a row for the first time, and again.
#include <wave/overview/overviewstrip.h>

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QPixmap>
#include <QRandomGenerator>

using namespace WaveMonitor;

namespace {

QList<QBitArray> row(int members, int samples)
{
    QList<QBitArray> bits;
    for (int member = 0; member < members; ++member) {
        QRandomGenerator random(quint32(member + 7));
        QByteArray bytes(samples / 8, Qt::Uninitialized);
        for (char &byte : bytes)
            byte = char(random.generate());
        bits.append(QBitArray::fromBits(bytes.constData(), samples));
    }
    return bits;
}

enum class Draw { First, Again };

void overview(benchmark::State &state, Draw draw)
{
    const QList<QBitArray> members = row(int(state.range(0)), int(state.range(1)));
    OverviewStrip strip;
    strip.resize(1920, 28);
    QPixmap target(strip.size());
    strip.setRow(members, int(state.range(1)), Qt::green);
    strip.setMarkers({100, 20'000, 40'000});
    strip.setTrigger(30'000);
    strip.render(&target);
    int step = 0;
    for (auto _ : state) {
        if (draw == Draw::First)
            strip.setRow(members, int(state.range(1)), Qt::green);
        ++step;
        strip.setView(100 * (step % 100), 100 * (step % 100) + 400);
        strip.render(&target);
    }
    if (target.toImage().pixelColor(1900, 15) != QColor(Qt::green))
        state.SkipWithError("the row does not stand there");
}
// A signal, a wide bus, all rows of a large core; and 16 times the samples.
BENCHMARK_CAPTURE(overview, first, Draw::First)
    ->Args({1, 65'536})
    ->Args({64, 65'536})
    ->Args({512, 65'536})
    ->Args({64, 1'048'576})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(overview, again, Draw::Again)
    ->Args({1, 65'536})
    ->Args({64, 65'536})
    ->Args({64, 1'048'576})
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
