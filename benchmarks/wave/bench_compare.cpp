#include <wave_data/windowcompare.h>
#include <wave_data/windowcontents.h>

#include <benchmark/benchmark.h>

#include <QRandomGenerator>

#include <vector>

using namespace WaveMonitor;

namespace {

constexpr int kSignals = 64;
constexpr qsizetype kSamples = 1'048'576;

enum Difference { OneBit, HalfOfAll };

/// The same random bits for the same seed, \a lead of them cut away.
QBitArray randomSamples(quint32 seed, qsizetype lead)
{
    QRandomGenerator random(seed);
    std::vector<quint32> words(size_t(kSamples + lead) / 32 + 1);
    random.generate(words.begin(), words.end());
    const auto bits = QBitArray::fromBits(reinterpret_cast<const char *>(words.data()),
                                          qsizetype(words.size()) * 32);
    QBitArray samples(kSamples);
    for (qsizetype i = 0; i < kSamples; ++i)
        samples.setBit(i, bits.testBit(i + lead));
    return samples;
}

WindowContents window(quint32 seed, qsizetype lead)
{
    WindowContents contents;
    for (int id = 0; id < kSignals; ++id)
        contents.addSignal({.id = id,
                            .name = QStringLiteral("net%1").arg(id),
                            .text = {},
                            .data = randomSamples(seed + quint32(id), lead)});
    contents.setTriggerPosition(int(1000 - lead));
    return contents;
}

// Two windows whose triggers are 13 samples apart, so that no word meets a whole one.
void compareWindows(benchmark::State &state)
{
    const WindowContents a = window(1, 0);
    WindowContents b = window(state.range(0) == OneBit ? 1 : 1000, 13);
    if (state.range(0) == OneBit) {
        SignalElement flipped = *b.signal(kSignals - 1);
        flipped.data.toggleBit(kSamples - 14);
        b.addSignal(flipped);
    }
    qsizetype differing = 0;
    for (auto _ : state) {
        const WindowComparison comparison(a, b);
        differing = 0;
        for (const ComparedSignal &signal : comparison.compared())
            differing += signal.differing;
        benchmark::DoNotOptimize(comparison.firstDifference());
    }
    if ((state.range(0) == OneBit) != (differing == 1))
        state.SkipWithError("another number of differing samples");
    state.counters["differing"] = double(differing);
}
BENCHMARK(compareWindows)
    ->ArgName("differ")
    ->Arg(OneBit)
    ->Arg(HalfOfAll)
    ->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
