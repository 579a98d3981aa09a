#include "vcdwriter.h"

#include "bytesink.h"
#include "exportfile.h"
#include "rowblock.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <functional>
#include <limits>
#include <utility>

namespace KEO {

namespace {

constexpr int kDigits = 94;
constexpr int kFirstDigit = 33;

/// A line or two that follow every time stamp; a copy takes all bytes, so that its size is known
/// to the compiler.
struct ShortText
{
    std::array<char, 8> bytes{};
    qsizetype size = 0;
};

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

char *writeShort(char *to, const ShortText &text)
{
    std::memcpy(to, text.bytes.data(), text.bytes.size());
    return to + text.size;
}

/// Bytes that writeStamp may write.
constexpr qsizetype kStampRoom = kDecimalRoom + 2 + qsizetype(sizeof(ShortText::bytes));

/// A time stamp and what stands behind it.
char *writeStamp(char *to, qint64 time, const ShortText &behind = {})
{
    *to++ = '#';
    to = writeDecimal(to, time);
    *to++ = '\n';
    return writeShort(to, behind);
}

void appendSampleComment(ByteSink &out, qint64 number, QByteArrayView role)
{
    out.append("$comment Sample ");
    out.appendNumber(number);
    out.append(role);
}

/// The lines "0<identifier>" and "1<identifier>" of each signal, ready to be copied.
class ChangeLines final
{
public:
    /// A line's greatest size: identifiers have two characters, of up to three bytes each.
    static constexpr int kMaximum = 8;

    explicit ChangeLines(const QList<ExportRecord> &records)
    {
        m_lines.reserve(size_t(records.size()));
        for (const ExportRecord &record : records) {
            const QByteArray line = '0' + record.id.toUtf8() + '\n';
            Q_ASSERT(line.size() <= kMaximum);
            std::array<char, kMaximum> text{};
            std::copy(line.begin(), line.end(), text.begin());
            m_lines.push_back({qFromLittleEndian<quint64>(text.data()), line.size()});
            m_longest = std::max(m_longest, line.size());
        }
    }

    [[nodiscard]] size_t count() const { return m_lines.size(); }
    [[nodiscard]] qsizetype longest() const { return m_longest; }

    /// Needs room for kMaximum bytes.
    char *write(char *to, size_t signal, bool level) const
    {
        const Line &line = m_lines[signal];
        qToLittleEndian(line.text + quint64(level), to); // '0' and '1' are neighbours
        return to + line.size;
    }

private:
    struct Line
    {
        quint64 text = 0; ///< the first character, the level, in the lowest byte
        qsizetype size = 0;
    };
    std::vector<Line> m_lines;
    qsizetype m_longest = 0;
};

/// All lines that four neighbouring signals can have together, for rows in which much changes: a
/// signal stays, falls or rises. None where lines are too long to be kept that way.
class GroupTexts final
{
public:
    static constexpr size_t kSignals = 4;

    explicit GroupTexts(const ChangeLines &lines)
    {
        if (lines.longest() > kLongestLine)
            return;
        m_groups.resize((lines.count() + kSignals - 1) / kSignals);
        for (size_t group = 0; group < m_groups.size(); ++group) {
            const size_t first = group * kSignals;
            const size_t present = std::min(kSignals, lines.count() - first);
            for (unsigned changed = 0; changed < 1U << present; ++changed) {
                for (unsigned levels = changed;; levels = (levels - 1) & changed) {
                    m_groups[group][state(changed, levels)] =
                        makeText(lines, first, changed, levels);
                    if (levels == 0)
                        break;
                }
            }
        }
    }

    [[nodiscard]] bool isEmpty() const { return m_groups.empty(); }

    /// The lines of those of the four signals that \a changed has a bit for. Needs room for
    /// kSignals * ChangeLines::kMaximum bytes.
    char *write(char *to, size_t group, unsigned changed, unsigned levels) const
    {
        const Text &text = m_groups[group][state(changed, levels & changed)];
        std::memcpy(to, text.bytes.data(), text.bytes.size());
        return to + text.size;
    }

private:
    static constexpr qsizetype kLongestLine = 4;
    static constexpr size_t kStates = 3 * 3 * 3 * 3;
    struct Text
    {
        std::array<char, kSignals * kLongestLine> bytes{};
        quint8 size = 0;
    };

    /// A digit to base 3 for each signal: 0 stays, 1 falls, 2 rises.
    static size_t state(unsigned changed, unsigned rising)
    {
        constexpr std::array<quint8, 1 << kSignals> places{0,  1,  3,  4,  9,  10, 12, 13,
                                                           27, 28, 30, 31, 36, 37, 39, 40};
        return size_t(places[changed]) + places[rising];
    }

    static Text makeText(const ChangeLines &lines, size_t first, unsigned changed, unsigned levels)
    {
        std::array<char, kSignals * ChangeLines::kMaximum> bytes{};
        char *to = bytes.data();
        for (size_t i = 0; i < kSignals; ++i) {
            if (changed >> i & 1)
                to = lines.write(to, first + i, levels >> i & 1);
        }
        Text text{.size = quint8(to - bytes.data())};
        std::copy(bytes.data(), to, text.bytes.begin());
        return text;
    }

    std::vector<std::array<Text, kStates>> m_groups;
};

/// The value changes of all signals, sample by sample.
class ChangeWriter final
{
public:
    static constexpr size_t kWordsAtOnce = 6;
    static constexpr qsizetype kRoom =
        qsizetype(kWordsAtOnce) * 64 * ChangeLines::kMaximum + kStampRoom;

    ChangeWriter(ByteSink &out, const QList<ExportRecord> &records)
        : m_out(out),
          m_lines(records),
          m_texts(m_lines),
          m_block(lanesOf(records)),
          m_live(size_t(m_block.wordsPerRow())),
          m_words(m_live.size()),
          m_busySize(m_texts.isEmpty() ? std::numeric_limits<qsizetype>::max()
                                       : kFew * m_lines.longest())
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
        for (size_t i = 0; i < m_words.size(); ++i) {
            if (i != 0 && i % kWordsAtOnce == 0) {
                m_out.taken(to);
                to = m_out.room(kRoom);
            }
            const quint64 changed = sample == 0 ? ~quint64(0) : row[i] ^ m_words[i].last;
            to = writeWord(to, changed & m_live[i], row[i], i);
            m_words[i].last = row[i];
        }
        return to;
    }

private:
    static constexpr qsizetype kFew = 8; ///< signals of 64: one by one is quicker then

    /// What is known of 64 signals from the row before.
    struct Word
    {
        quint64 last = 0;
        bool isBusy = false; ///< the next one is taken to have as many changes
    };

    static std::vector<QBitArray> lanesOf(const QList<ExportRecord> &records)
    {
        std::vector<QBitArray> lanes;
        lanes.reserve(size_t(records.size()));
        for (const ExportRecord &record : records)
            lanes.push_back(record.data);
        return lanes;
    }

    char *writeWord(char *to, quint64 changed, quint64 levels, size_t word)
    {
        const char *begin = to;
        if (m_words[word].isBusy) {
            constexpr unsigned four = (1U << GroupTexts::kSignals) - 1;
            size_t group = word * (64 / GroupTexts::kSignals);
            for (; changed != 0; changed >>= GroupTexts::kSignals, ++group) {
                to = m_texts.write(to, group, unsigned(changed) & four, unsigned(levels) & four);
                levels >>= GroupTexts::kSignals;
            }
        } else {
            for (; changed != 0; changed &= changed - 1) {
                const int bit = std::countr_zero(changed);
                to = m_lines.write(to, word * 64 + size_t(bit), levels >> bit & 1);
            }
        }
        m_words[word].isBusy = to - begin > m_busySize;
        return to;
    }

    ByteSink &m_out;
    ChangeLines m_lines;
    GroupTexts m_texts;
    RowBlock m_block;
    std::vector<quint64> m_live; ///< one bit a signal: it still has samples to show
    std::vector<Word> m_words;
    qsizetype m_busySize;                                ///< what more than a few lines take
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
