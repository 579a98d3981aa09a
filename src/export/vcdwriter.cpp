#include "vcdwriter.h"

#include "bytesink.h"
#include "exportfile.h"
#include "rowblock.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstring>
#include <functional>
#include <limits>
#include <utility>

namespace KEO {

namespace {

constexpr int kDigits = 94;
constexpr int kFirstDigit = 33;

QByteArray clockLine(bool level)
{
    return level ? QByteArrayLiteral("1!\n") : QByteArrayLiteral("0!\n");
}

/// Time stamp of a sample's active edge. Worked out in double precision, as the format asks for.
qint64 middleOf(qsizetype sample, qint64 period)
{
    constexpr double limit = 9223372036854774784.0; // greatest double below 2^63
    return qint64(std::clamp((double(sample) + 0.5) * double(period), -limit, limit));
}

/// The start of sample \a sample; wraps round where 64 bits are not enough.
qint64 startOf(qsizetype sample, qint64 period)
{
    return qint64(quint64(sample) * quint64(period));
}

void appendStamp(ByteSink &out, qint64 time)
{
    char *to = out.room(ByteSink::kNumberRoom + 2);
    *to++ = '#';
    to = std::to_chars(to, to + ByteSink::kNumberRoom, time).ptr;
    *to++ = '\n';
    out.taken(to);
}

void appendSampleComment(ByteSink &out, qint64 number, QByteArrayView role)
{
    out.append("$comment Sample ");
    out.appendNumber(number);
    out.append(role);
}

/// The lines "0<identifier>" and "1<identifier>" of each signal, ready to be copied. Identifiers
/// within the printable range take at most two bytes; copies always take a whole line.
class ChangeLines final
{
public:
    static constexpr int kMaximum = 16;

    explicit ChangeLines(const QList<ExportRecord> &records)
    {
        m_lines.reserve(size_t(records.size()));
        for (const ExportRecord &record : records) {
            const QByteArray end = record.id.toUtf8() + '\n';
            Q_ASSERT(end.size() < qsizetype(Line().text.size()));
            Line line;
            line.size = char(end.size() + 1);
            std::copy(end.begin(), end.end(), line.text.begin() + 1);
            m_lines.push_back(line);
        }
    }

    /// Needs room for kMaximum bytes.
    char *write(char *to, qsizetype signal, bool level) const
    {
        const Line &line = m_lines[size_t(signal)];
        std::memcpy(to, line.text.data(), line.text.size());
        *to = level ? '1' : '0';
        return to + line.size;
    }

private:
    struct Line
    {
        std::array<char, kMaximum - 1> text{};
        char size = 0;
    };
    std::vector<Line> m_lines;
};

/// The value changes of all signals, sample by sample.
class ChangeWriter final
{
public:
    ChangeWriter(ByteSink &out, const QList<ExportRecord> &records)
        : m_out(out),
          m_lines(records),
          m_block(lanesOf(records)),
          m_live(size_t(m_block.wordsPerRow())),
          m_last(m_live.size())
    {
        for (qsizetype i = 0; i < records.size(); ++i) {
            const qsizetype samples = records[i].data.size();
            // Only a signal whose position is below its number of samples is ever dumped.
            if (i >= samples)
                continue;
            m_live[size_t(i / 64)] |= quint64(1) << (i % 64);
            m_ends.emplace_back(samples, i);
        }
        std::sort(m_ends.begin(), m_ends.end(), std::greater<>());
    }

    /// Samples must come in order, from 0 on.
    void write(qsizetype sample)
    {
        const int position = int(sample % RowBlock::kRows);
        if (position == 0)
            m_block.load(sample);
        for (; !m_ends.empty() && m_ends.back().first <= sample; m_ends.pop_back()) {
            const qsizetype signal = m_ends.back().second;
            m_live[size_t(signal / 64)] &= ~(quint64(1) << (signal % 64));
        }
        const quint64 *row = m_block.row(position);
        for (size_t i = 0; i < m_live.size(); ++i) {
            const quint64 changed = sample == 0 ? ~quint64(0) : row[i] ^ m_last[i];
            writeWord(changed & m_live[i], row[i], qsizetype(i) * 64);
            m_last[i] = row[i];
        }
    }

private:
    static std::vector<QBitArray> lanesOf(const QList<ExportRecord> &records)
    {
        std::vector<QBitArray> lanes;
        lanes.reserve(size_t(records.size()));
        for (const ExportRecord &record : records)
            lanes.push_back(record.data);
        return lanes;
    }

    void writeWord(quint64 changed, quint64 levels, qsizetype firstSignal)
    {
        if (changed == 0)
            return;
        char *to = m_out.room(64 * ChangeLines::kMaximum);
        for (; changed != 0; changed &= changed - 1) {
            const int bit = std::countr_zero(changed);
            to = m_lines.write(to, firstSignal + bit, levels >> bit & 1);
        }
        m_out.taken(to);
    }

    ByteSink &m_out;
    ChangeLines m_lines;
    RowBlock m_block;
    std::vector<quint64> m_live; ///< one bit a signal: it still has samples to show
    std::vector<quint64> m_last; ///< the row before
    std::vector<std::pair<qsizetype, qsizetype>> m_ends; ///< (samples, signal), next one last
};

struct VcdHead
{
    const QString &moduleName;
    const QString &clockName;
    const QString &timeUnit;
    const QDateTime &written;
};

void writeHead(ByteSink &out, const VcdHead &head, const QList<ExportRecord> &records)
{
    const QString date = head.written.toString(QStringLiteral("dd/MM/yyyy hh:mm:ss"));
    out.append("$comment\nWritten by Signal Scope\n$end\n");
    out.appendText(QStringLiteral("$date\n  %1\n$end\n").arg(date));
    out.appendText(QStringLiteral("$timescale\n  1 %1\n$end\n").arg(head.timeUnit));
    out.appendText(QStringLiteral("$scope\nmodule %1\n$end\n").arg(head.moduleName));
    out.appendText(QStringLiteral("$var\nreg 1 ! %1\n$end\n").arg(head.clockName));
    for (const ExportRecord &record : records)
        out.appendText(QStringLiteral("$var\nreg 1 %1 %2\n$end\n").arg(record.id, record.name));
    out.append("$upscope\n$end\n$enddefinitions\n$end\n");
}

void writeStart(ByteSink &out, const QByteArray &idleClock, const QList<ExportRecord> &records)
{
    out.append("#0\n$dumpvars\n");
    out.append(idleClock);
    for (const ExportRecord &record : records)
        out.appendText(QStringLiteral("X%1\n").arg(record.id));
    out.append("$end\n");
}

} // namespace

QString vcdIdentifier(int position)
{
    const auto digit = [](int value) { return QChar(char16_t(value + kFirstDigit)); };
    if (position < kDigits)
        return digit(position);
    return QString(digit(position / kDigits)) + digit(position % kDigits);
}

QList<ExportRecord> readVcdRecords(const ExportWindow &window)
{
    QList<ExportRecord> records = readNamedRecords(window);
    for (qsizetype i = 0; i < records.size(); ++i)
        records[i].id = vcdIdentifier(int(i) + 1);
    return records;
}

bool writeVcd(QIODevice &device, const QString &moduleName, const QString &clockName,
              bool clockInverted, const QString &timeUnit, qint64 period, int triggerSample,
              const ExportWindow &window, const QDateTime &written)
{
    const QList<ExportRecord> records = readVcdRecords(window);
    const QByteArray idleClock = clockLine(clockInverted);
    const QByteArray activeClock = clockLine(!clockInverted);
    const QByteArray sampleEnd = idleClock + '\n';
    const qsizetype samples = records.isEmpty() ? 0 : records.first().data.size();

    ByteSink out(device);
    writeHead(out, {moduleName, clockName, timeUnit, written}, records);
    writeStart(out, idleClock, records);
    ChangeWriter changes(out, records);
    for (qsizetype i = 0; i < samples && out.isGood(); ++i) {
        appendStamp(out, middleOf(i, period));
        if (i == 0)
            out.append("$comment Sample 0 (Start) $end\n");
        if (i == samples - 1)
            appendSampleComment(out, samples, " (End) $end\n");
        if (i == triggerSample)
            appendSampleComment(out, triggerSample, " (Trigger) $end\n");
        out.append(activeClock);
        changes.write(i);
        appendStamp(out, startOf(i + 1, period));
        out.append(sampleEnd);
    }
    appendStamp(out, startOf(samples + 1, period));
    return out.finish();
}

bool writeVcd(const QString &path, const QString &moduleName, const QString &clockName,
              bool clockInverted, const QString &timeUnit, qint64 period, int triggerSample,
              const ExportWindow &window)
{
    return writeExportFile(path, [&](QIODevice &file) {
        return writeVcd(file, moduleName, clockName, clockInverted, timeUnit, period, triggerSample,
                        window, QDateTime::currentDateTime());
    });
}

} // namespace KEO
