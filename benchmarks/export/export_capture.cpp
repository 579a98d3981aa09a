// export_capture FORMAT IN.bin CHANNELS OUT: exports raw packed samples. One row of the input has
// CHANNELS / 8 bytes, channel 0 is bit 0 of byte 0. FORMAT is csv, vcd, csv-plain, vcd-plain, or
// none, which reads the input as the others do and writes nothing: what the others need beyond it
// is the writer's. IN.bin may also be same:ROWS; then all channels share the samples of one, and a
// process that grows with the number of rows has a writer that does.

#include "randomwindow.h"

#include <base/bitwords.h>
#include <base/wholefile.h>
#include <export/csvwriter.h>
#include <export/plaincsvwriter.h>
#include <export/plainvcdwriter.h>
#include <export/vcdwriter.h>
#include <wave_data/windowcontents.h>

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

using WaveMonitor::WindowContents;

namespace {

/// Cuts eight channels at a time out of the rows.
QList<QBitArray> channelsOf(const uchar *input, qsizetype rows, int channels)
{
    const qsizetype rowBytes = channels / 8;
    const qsizetype words = (rows + 63) / 64;
    QList<QBitArray> samples;
    std::vector<quint64> columns(size_t(words) * size_t(std::min(64, channels)));
    for (int first = 0; first < channels; first += 64) {
        const int used = std::min(64, channels - first);
        for (qsizetype word = 0; word < words; ++word) {
            KEO::BitSquare square = {};
            const qsizetype present = std::min<qsizetype>(64, rows - word * 64);
            for (qsizetype r = 0; r < present; ++r) {
                std::memcpy(&square[size_t(r)], input + (word * 64 + r) * rowBytes + first / 8,
                            size_t(used) / 8);
                square[size_t(r)] = qFromLittleEndian(square[size_t(r)]);
            }
            KEO::transposeBits(square);
            for (int c = 0; c < used; ++c)
                columns[size_t(c * words + word)] = qToLittleEndian(square[size_t(c)]);
        }
        for (int c = 0; c < used; ++c)
            samples.append(QBitArray::fromBits(
                reinterpret_cast<const char *>(columns.data() + c * words), rows));
    }
    return samples;
}

QList<QBitArray> readFile(const QString &path, int channels)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const uchar *input = file.map(0, file.size());
    if (!input)
        return {};
    return channelsOf(input, file.size() / (channels / 8), channels);
}

bool load(const QString &path, int channels, WindowContents &contents)
{
    const QString same = QStringLiteral("same:");
    const QList<QBitArray> samples =
        path.startsWith(same)
            ? QList<QBitArray>(channels, randomSamples(path.mid(same.size()).toLongLong(), 1))
            : readFile(path, channels);
    for (int i = 0; i < samples.size(); ++i)
        contents.addSignal(
            {.id = i, .name = QStringLiteral("net%1").arg(i), .text = {}, .data = samples[i]});
    return !samples.isEmpty();
}

bool writeTo(QIODevice &out, const QString &format, const WindowContents &contents)
{
    const QString unit = QStringLiteral("ns");
    if (format == QLatin1String("csv"))
        return KEO::writeCsv(out, unit, 1, contents);
    if (format == QLatin1String("vcd"))
        return KEO::writeVcd(out, QStringLiteral("dut"), QStringLiteral("clk"), false, unit, 2, 0,
                             contents, QDateTime::currentDateTime());
    if (format == QLatin1String("csv-plain"))
        return KEO::writePlainCsv(out, unit, 1, 0, KEO::Formulas::Kept, contents);
    if (format == QLatin1String("vcd-plain"))
        return KEO::writePlainVcd(out, {QStringLiteral("dut"), 1000, 0, {}}, contents);
    return format == QLatin1String("none");
}

/// As the programs write a file; but what is no file, such as /dev/null, they would refuse.
bool write(const QString &format, const QString &path, const WindowContents &contents)
{
    const auto writeContents = [&](QIODevice &out) { return writeTo(out, format, contents); };
    const QFileInfo present(path);
    if (!present.exists() || present.isFile())
        return !KEO::writeWholeFile(path, KEO::LineEnds::Native, writeContents);
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && writeContents(file);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 5) {
        std::fputs("usage: export_capture csv|vcd|csv-plain|vcd-plain|none IN.bin CHANNELS OUT\n",
                   stderr);
        return 2;
    }
    const int channels = std::atoi(argv[3]);
    WindowContents contents;
    if (channels <= 0 || channels % 8 != 0 ||
        !load(QFile::decodeName(argv[2]), channels, contents)) {
        std::fputs("the samples can't be read\n", stderr);
        return 1;
    }
    if (!write(QString::fromLatin1(argv[1]), QFile::decodeName(argv[4]), contents)) {
        std::fputs("the file can't be written\n", stderr);
        return 1;
    }
    return 0;
}
