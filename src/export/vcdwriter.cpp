#include "vcdwriter.h"

#include "bytesink.h"
#include "rowblock.h"
#include "vcdlines.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace KEO {

namespace {

constexpr int kDigits = 94;
constexpr int kFirstDigit = 33;

constexpr ShortText kActiveHigh{{'1', '!', '\n'}, 3};
constexpr ShortText kActiveLow{{'0', '!', '\n'}, 3};
constexpr ShortText kEndHigh{{'1', '!', '\n', '\n'}, 4};
constexpr ShortText kEndLow{{'0', '!', '\n', '\n'}, 4};

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

void appendSampleComment(ByteSink &out, qint64 number, QByteArrayView role)
{
    out.append("$comment Sample ");
    out.appendNumber(number);
    out.append(role);
}

/// The value changes of all signals, sample by sample.
class ChangeWriter final
{
public:
    static constexpr size_t kWordsAtOnce = 6;
    static constexpr qsizetype kRoom = qsizetype(kWordsAtOnce) * LevelLines::kRoom + kStampRoom;

    ChangeWriter(ByteSink &out, const QList<ExportRecord> &records)
        : m_out(out),
          m_lines(identifiersOf(records)),
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

    /// Samples must come in order, from 0 on. Writes to \a to, which has kRoom bytes, or to more
    /// room, and leaves kStampRoom bytes behind the end of the text, which it returns.
    char *write(char *to, qsizetype sample)
    {
        const int position = int(sample % RowBlock::kRows);
        if (position == 0)
            m_block.load(sample);
        for (; !m_ends.empty() && m_ends.back().first <= sample; m_ends.pop_back()) {
            const qsizetype signal = m_ends.back().second;
            m_live[size_t(signal / 64)] &= ~(quint64(1) << (signal % 64));
        }
        const quint64 *row = m_block.row(position);
        for (size_t i = 0; i < m_last.size(); ++i) {
            if (i != 0 && i % kWordsAtOnce == 0) {
                m_out.taken(to);
                to = m_out.room(kRoom);
            }
            const quint64 changed = sample == 0 ? ~quint64(0) : row[i] ^ m_last[i];
            to = m_lines.write(to, i, changed & m_live[i], row[i]);
            m_last[i] = row[i];
        }
        return to;
    }

private:
    static QList<QByteArray> identifiersOf(const QList<ExportRecord> &records)
    {
        QList<QByteArray> identifiers;
        identifiers.reserve(records.size());
        for (const ExportRecord &record : records)
            identifiers.append(record.id.toUtf8());
        return identifiers;
    }

    static std::vector<QBitArray> lanesOf(const QList<ExportRecord> &records)
    {
        std::vector<QBitArray> lanes;
        lanes.reserve(size_t(records.size()));
        for (const ExportRecord &record : records)
            lanes.push_back(record.data);
        return lanes;
    }

    ByteSink &m_out;
    LevelLines m_lines;
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

void writeStart(ByteSink &out, QByteArrayView idleClock, const QList<ExportRecord> &records)
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
    const ShortText &activeClock = clockInverted ? kActiveLow : kActiveHigh;
    const ShortText &sampleEnd = clockInverted ? kEndHigh : kEndLow;
    const qsizetype samples = records.isEmpty() ? 0 : records.first().data.size();

    ByteSink out(device);
    writeHead(out, {moduleName, clockName, timeUnit, written}, records);
    writeStart(out, clockInverted ? "1!\n" : "0!\n", records);
    ChangeWriter changes(out, records);
    for (qsizetype i = 0; i < samples && out.isGood(); ++i) {
        char *to = out.room(kStampRoom + ChangeWriter::kRoom);
        if (i == 0 || i == samples - 1 || i == triggerSample) {
            out.taken(writeStamp(to, middleOf(i, period)));
            if (i == 0)
                out.append("$comment Sample 0 (Start) $end\n");
            if (i == samples - 1)
                appendSampleComment(out, samples, " (End) $end\n");
            if (i == triggerSample)
                appendSampleComment(out, triggerSample, " (Trigger) $end\n");
            to = out.room(kStampRoom + ChangeWriter::kRoom);
            to = writeShort(to, activeClock);
        } else {
            to = writeStamp(to, middleOf(i, period), activeClock);
        }
        to = changes.write(to, i);
        out.taken(writeStamp(to, startOf(i + 1, period), sampleEnd));
    }
    out.taken(writeStamp(out.room(kStampRoom), startOf(samples + 1, period)));
    return out.finish();
}

} // namespace KEO
