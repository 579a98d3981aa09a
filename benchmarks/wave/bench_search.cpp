// A search of 1,048,576 samples of a bus of 64 bits.
#include <wave_data/samplesearch.h>

#include <benchmark/benchmark.h>

#include <QRandomGenerator>

using namespace WaveMonitor;

namespace {

constexpr int kSamples = 1'048'576;
constexpr int kBits = 64;

/// Noise, the worst to search, or a counter, which has all values in order.
QList<QBitArray> bus(bool isNoise)
{
    QList<QBitArray> members;
    QRandomGenerator random(7);
    for (int bit = kBits - 1; bit >= 0; --bit) {
        QByteArray bytes(kSamples / 8, '\0');
        for (int k = 0; k < kSamples; ++k) {
            const bool level = isNoise ? random.bounded(2) : k >> std::min(bit, 30) & 1;
            bytes[k / 8] = char(bytes[k / 8] | int(level) << k % 8);
        }
        members.append(QBitArray::fromBits(bytes.constData(), kSamples));
    }
    return members;
}

void search(benchmark::State &state, const char *text, DataFormat::Type radix, bool isNoise)
{
    const QList<QBitArray> members = bus(isNoise);
    SamplePattern pattern;
    if (*text)
        pattern = *parsePattern(QString::fromLatin1(text), kBits, radix);
    qsizetype hits = 0;
    for (auto _ : state)
        hits = SampleSearch(members, pattern).all().count();
    state.counters["hits"] = double(hits);
}

#define BENCH_SEARCH(name, text, radix)                                                            \
    BENCHMARK_CAPTURE(search, name##_noise, text, DataFormat::radix, true)                         \
        ->Unit(benchmark::kMillisecond);                                                           \
    BENCHMARK_CAPTURE(search, name##_counter, text, DataFormat::radix, false)                      \
        ->Unit(benchmark::kMillisecond)

BENCH_SEARCH(edges, "", Hexadecimal);
BENCH_SEARCH(value, "000000000000ABCD", Hexadecimal);
BENCH_SEARCH(anyDigits, "XXXXXXXXXXXXXBCX", Hexadecimal);
BENCH_SEARCH(comparison, "> 0x3F", Hexadecimal);
BENCH_SEARCH(comparisonSigned, "<= 100000", SignedDecimal);
BENCH_SEARCH(decimalRange, "4321X", UnsignedDecimal);
BENCH_SEARCH(decimalDigits, "X3X1", UnsignedDecimal);

/// The way to the last edge of a row that has one.
void nextEdge(benchmark::State &state)
{
    QList<QBitArray> members(kBits, QBitArray(kSamples));
    members.last().setBit(kSamples - 1);
    const SampleSearch search(members, {});
    for (auto _ : state) {
        if (search.next(0) != kSamples - 1 || search.previous(kSamples - 1))
            state.SkipWithError("the edge is missing");
    }
}
BENCHMARK(nextEdge)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
