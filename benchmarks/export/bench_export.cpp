#include "randomwindow.h"

#include <export/csvwriter.h>
#include <export/plaincsvwriter.h>
#include <export/plainvcdwriter.h>
#include <export/vcdwriter.h>
#include <wave_data/dataformat.h>

#include <QDomDocument>
#include <QIODevice>

#include <benchmark/benchmark.h>

#include <vector>

using WaveMonitor::BusElement;
using WaveMonitor::DataFormat;
using WaveMonitor::SignalElement;
using WaveMonitor::WindowContents;

namespace {

/// Counts bytes and keeps none, so that the figures are the writer's alone.
class CountingDevice final : public QIODevice
{
public:
    CountingDevice() { open(QIODevice::WriteOnly | QIODevice::Unbuffered); }
    [[nodiscard]] qint64 bytes() const { return m_bytes; }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *, qint64 size) override
    {
        m_bytes += size;
        return size;
    }

private:
    qint64 m_bytes = 0;
};

template <typename Write>
void measure(benchmark::State &state, Write write)
{
    qint64 bytes = 0;
    for (auto _ : state) {
        CountingDevice device;
        if (!write(device))
            state.SkipWithError("the writer failed");
        bytes += device.bytes();
    }
    state.SetBytesProcessed(bytes);
}

void csvSignals(benchmark::State &state)
{
    WindowContents contents;
    addRandomSignals(contents, int(state.range(1)), state.range(0));
    measure(state, [&](QIODevice &device) { return KEO::writeCsv(device, "ns", 1, contents); });
}
BENCHMARK(csvSignals)->Args({65'536, 256})->Unit(benchmark::kMillisecond);

/// Eight buses of 32 random bits: no value repeats the one before it.
void addRandomBuses(WindowContents &contents, DataFormat::Type format)
{
    constexpr int buses = 8;
    constexpr int width = 32;
    for (int bus = 0; bus < buses; ++bus) {
        std::vector<SignalElement> members;
        for (int i = 0; i < width; ++i)
            members.push_back({.id = bus * width + i,
                               .name = QStringLiteral("d%1[%2]").arg(bus).arg(width - 1 - i),
                               .text = {},
                               .data = randomSamples(65'536, quint32(bus * width + i) + 1)});
        BusElement element{.name = QStringLiteral("d%1").arg(bus), .text = {}, .signals = {}};
        for (SignalElement &member : members)
            element.signals.append(&member);
        contents.addBus(element).format->setType(format);
    }
}

/// Each with its members.
void csvBuses(benchmark::State &state)
{
    WindowContents contents;
    addRandomBuses(contents, DataFormat::Type(state.range(0)));
    measure(state, [&](QIODevice &device) { return KEO::writeCsv(device, "ns", 1, contents); });
}
BENCHMARK(csvBuses)
    ->ArgName("format")
    ->Arg(DataFormat::Hexadecimal)
    ->Arg(DataFormat::SignedDecimal)
    ->Unit(benchmark::kMillisecond);

void vcdSignals(benchmark::State &state)
{
    WindowContents contents;
    addRandomSignals(contents, int(state.range(1)), state.range(0));
    const QDateTime written = QDateTime::fromMSecsSinceEpoch(0);
    measure(state, [&](QIODevice &device) {
        return KEO::writeVcd(device, "dut", "clk", false, "ps", 1000, 0, contents, written);
    });
}
BENCHMARK(vcdSignals)->Args({1'048'576, 32})->Unit(benchmark::kMillisecond);

const KEO::PlainVcdHead kPlainHead{.moduleName = QStringLiteral("dut"),
                                   .period = 1000,
                                   .triggerSample = 0,
                                   .written = QDateTime::fromMSecsSinceEpoch(0)};

void plainVcdSignals(benchmark::State &state)
{
    WindowContents contents;
    addRandomSignals(contents, int(state.range(1)), state.range(0));
    measure(state, [&](QIODevice &out) { return KEO::writePlainVcd(out, kPlainHead, contents); });
}
BENCHMARK(plainVcdSignals)->Args({1'048'576, 32})->Unit(benchmark::kMillisecond);

void plainVcdBuses(benchmark::State &state)
{
    WindowContents contents;
    addRandomBuses(contents, DataFormat::Hexadecimal);
    measure(state, [&](QIODevice &out) { return KEO::writePlainVcd(out, kPlainHead, contents); });
}
BENCHMARK(plainVcdBuses)->Unit(benchmark::kMillisecond);

void plainCsvSignals(benchmark::State &state)
{
    WindowContents contents;
    addRandomSignals(contents, int(state.range(1)), state.range(0));
    measure(state, [&](QIODevice &out) {
        return KEO::writePlainCsv(out, "ns", 1, 0, KEO::Formulas::Kept, contents);
    });
}
BENCHMARK(plainCsvSignals)->Args({65'536, 256})->Unit(benchmark::kMillisecond);

/// What a project's saving and loading ask of a window, without the XML text itself.
void windowXml(benchmark::State &state)
{
    WindowContents contents;
    addRandomSignals(contents, 256, 65'536);
    for (auto _ : state) {
        QDomDocument document;
        WindowContents again;
        if (!again.readWindow(contents.writeWindow(document)) ||
            again.maxDataLength() != contents.maxDataLength())
            state.SkipWithError("the window was not read");
    }
}
BENCHMARK(windowXml)->Unit(benchmark::kMillisecond);

void radixText(benchmark::State &state)
{
    const QBitArray value = randomSamples(state.range(1), 1);
    const DataFormat format{DataFormat::Type(state.range(0))};
    for (auto _ : state)
        benchmark::DoNotOptimize(format.toText(value));
}
BENCHMARK(radixText)
    ->ArgNames({"format", "bits"})
    ->ArgsProduct({{DataFormat::Binary, DataFormat::SignedDecimal, DataFormat::Hexadecimal},
                   {32, 64, 1000}});

} // namespace

BENCHMARK_MAIN();
