// What a user waits for after OK in the export dialog, and what it takes in memory: the dialog's
// own road from the viewer to the files. SIGNALSCOPE_BENCH_DIR is where the files go, else the
// system's temporary folder.

#include "randomwindow.h"

#include <export_ui/exportdialog.h>
#include <wave/wavemonitorwidget.h>

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>

using WaveMonitor::SignalElement;
using WaveMonitor::WaveMonitorWidget;

namespace {

enum Format { Csv, Vcd, Prn, PrnOfBuses };

/// Highest memory of the process since the last call, in kB; 0 where the system does not tell.
qint64 takePeak()
{
    qint64 peak = 0;
    QFile status(QStringLiteral("/proc/self/status"));
    if (status.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : status.readAll().split('\n')) {
            if (line.startsWith("VmHWM:"))
                peak = line.simplified().split(' ').value(1).toLongLong();
        }
    }
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    if (clear.open(QIODevice::WriteOnly))
        clear.write("5");
    return peak;
}

/// Signals and, for each 32 of them, a bus.
void fill(WaveMonitorWidget &monitor, int signals, qsizetype samples)
{
    constexpr int width = 32;
    for (int first = 0; first < signals; first += width) {
        std::vector<SignalElement> members;
        for (int i = first; i < std::min(signals, first + width); ++i)
            members.push_back({.id = i,
                               .name = QStringLiteral("net%1").arg(i),
                               .text = {},
                               .data = randomSamples(samples, quint32(i) + 1)});
        WaveMonitor::BusElement bus{
            .name = QStringLiteral("bus%1").arg(first), .text = {}, .signals = {}};
        for (SignalElement &member : members)
            bus.signals.append(&member);
        monitor.addBus(bus);
    }
    monitor.setTitle(0, 0);
}

void exportByDialog(benchmark::State &state)
{
    const auto format = Format(state.range(0));
    const QString place = qEnvironmentVariable("SIGNALSCOPE_BENCH_DIR", QDir::tempPath());
    const QTemporaryDir directory(place + QStringLiteral("/export-XXXXXX"));
    WaveMonitorWidget monitor(0, nullptr);
    fill(monitor, int(state.range(2)), state.range(1));
    const KEO::ExportSource source{.mode = KEO::ExportMode::Lite,
                                   .directory = directory.path(),
                                   .cores = {{.index = 0,
                                              .moduleName = QStringLiteral("dut"),
                                              .sampleClock = QStringLiteral("clk")}},
                                   .waveMonitors = {&monitor}};
    qint64 growth = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto dialog = std::make_unique<KEO::ExportDialog>(source);
        dialog->show();
        dialog->findChild<QLineEdit *>(QStringLiteral("editName"))->setText(QStringLiteral("out"));
        dialog->findChild<QComboBox *>(QStringLiteral("comBoxFormat"))
            ->setCurrentIndex(std::min<int>(format, Prn));
        dialog->findChild<QComboBox *>(QStringLiteral("comboBoxForPRN"))
            ->setCurrentIndex(format == PrnOfBuses ? 2 : 0);
        takePeak();
        const qint64 before = takePeak();
        state.ResumeTiming();
        dialog->accept();
        state.PauseTiming();
        growth = std::max(growth, takePeak() - before);
        dialog.reset();
        state.ResumeTiming();
    }
    const QFileInfoList files = QDir(directory.path()).entryInfoList(QDir::Files);
    if (files.size() != 1 || files.first().size() < state.range(1))
        state.SkipWithError("no file was written");
    else
        state.counters["file_MB"] = double(files.first().size()) / 1e6;
    state.counters["memory_kB"] = double(growth);
}
BENCHMARK(exportByDialog)
    ->ArgNames({"format", "samples", "signals"})
    ->ArgsProduct({{Csv, Vcd, Prn, PrnOfBuses}, {65'536, 524'288}, {256}})
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
