// export_capture FORMAT IN.bin CHANNELS OUT: exports raw packed samples. One row of the input has
// CHANNELS / 8 bytes, channel 0 is bit 0 of byte 0. FORMAT is csv, vcd, or none, which reads the
// input as the others do and writes nothing: what the others need beyond it is the writer's.
// IN.bin may also be same:ROWS; then all channels share the samples of one, and a process that
// grows with the number of rows has a writer that does.

#include "randomwindow.h"

#include <base/bitwords.h>
#include <export/csvwriter.h>
#include <export/vcdwriter.h>
#include <wave_data/windowcontents.h>

#include <QFile>
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

bool write(const QString &format, const QString &path, const WindowContents &contents)
{
    if (format == QLatin1String("csv"))
        return KEO::writeCsv(path, QStringLiteral("ns"), 1, contents);
    if (format == QLatin1String("vcd"))
        return KEO::writeVcd(path, QStringLiteral("dut"), QStringLiteral("clk"), false,
                             QStringLiteral("ns"), 2, 0, contents);
    return format == QLatin1String("none");
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 5) {
        std::fputs("usage: export_capture csv|vcd|none IN.bin CHANNELS OUT\n", stderr);
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
