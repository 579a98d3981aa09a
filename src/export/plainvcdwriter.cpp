#include "plainvcdwriter.h"

#include "bytesink.h"
#include "plainnames.h"
#include "rowblock.h"
#include "vcdlines.h"

#include <wave_data/radixtext.h>

#include <algorithm>
#include <array>
#include <bit>
#include <functional>
#include <utility>

using WaveMonitor::DataFormat;
using WaveMonitor::radixText;
using WaveMonitor::radixTextCapacity;

namespace KEO {

namespace {

const QString kTriggerName = QStringLiteral("trigger");

struct Variable
{
    QByteArray identifier;
    QList<QBitArray> rows; ///< most significant bit first; at least one
    qsizetype samples = 0;
};

/// Base 94, every printable character but the blank; the first variable's is "!".
QByteArray identifierAt(qsizetype position)
{
    constexpr qsizetype digits = 94;
    QByteArray identifier;
    do {
        identifier += char('!' + position % digits);
        position /= digits;
    } while (position > 0);
    return identifier;
}

/// The declarations, gathered by scope so that each scope stands once.
class Scope final
{
public:
    explicit Scope(QString name) : m_name(std::move(name)) {}

    void declare(const QString &title, qsizetype width, const QByteArray &identifier)
    {
        VcdName name = vcdName(title, width);
        Scope *scope = this;
        for (const QString &inner : std::as_const(name.scopes))
            scope = &scope->inner(inner);
        scope->m_names.makeUnique(name, width);
        const QString index = name.index.isEmpty() ? QString() : u' ' + name.index;
        scope->m_lines.append(
            QStringLiteral("$var wire %1 %2 %3%4 $end\n")
                .arg(QString::number(width), QString::fromLatin1(identifier), name.base, index));
    }

    void write(ByteSink &out) const
    {
        out.appendText(QStringLiteral("$scope module %1 $end\n").arg(m_name));
        for (const QString &line : m_lines)
            out.appendText(line);
        for (const auto &scope : m_inner)
            scope->write(out);
        out.append("$upscope $end\n");
    }

private:
    Scope &inner(const QString &name)
    {
        Scope *&found = m_byName[name];
        if (!found)
            found = m_inner.emplace_back(std::make_unique<Scope>(name)).get();
        return *found;
    }

    QString m_name;
    VcdScopeNames m_names;
    QStringList m_lines;
    std::vector<std::unique_ptr<Scope>> m_inner; ///< in the order of their first variables
    QHash<QString, Scope *> m_byName;
};

/// The line of a bus, in which only the digits change.
class VectorLine final
{
public:
    VectorLine(const Variable &variable, qsizetype lane)
        : m_lane(lane),
          m_width(variable.rows.size()),
          m_value(size_t(m_width + 63) / 64),
          m_text(1 + radixTextCapacity(m_width), 'b'),
          m_tail(' ' + variable.identifier + '\n')
    {
    }

    [[nodiscard]] qsizetype end() const { return m_lane + m_width; }

    void write(ByteSink &out, const quint64 *row)
    {
        for (size_t i = 0; i < m_value.size(); ++i) {
            const auto before = qsizetype(i) * 64;
            const int count = int(std::min<qsizetype>(64, m_width - before));
            m_value[i] = rowBits(row, m_lane + before, count);
        }
        const qsizetype digits =
            radixText(DataFormat::Binary, m_value.data(), m_width, m_text.data() + 1);
        out.append(QByteArrayView(m_text.constData(), 1 + digits));
        out.append(m_tail);
    }

private:
    qsizetype m_lane; ///< of the least significant bit
    qsizetype m_width;
    std::vector<quint64> m_value;
    QByteArray m_text;
    QByteArray m_tail;
};

/// What changes from row to row. Single bits have the first lanes, buses the ones behind them.
class ValueChanges final
{
public:
    ValueChanges(ByteSink &out, const std::vector<Variable> &variables)
        : m_out(out), m_levels(levelIdentifiers(variables)), m_block(lanesOf(variables))
    {
        const auto words = size_t(m_block.wordsPerRow());
        m_live.resize(words);
        m_last.resize(words);
        m_changed.resize(words);
        qsizetype level = 0;
        qsizetype vector = m_levelCount = std::ranges::count_if(variables, isLevel);
        for (const Variable &variable : variables) {
            qsizetype &lane = isLevel(variable) ? level : vector;
            m_ends.push_back({variable.samples, lane, variable.rows.size(), variable.identifier});
            if (!isLevel(variable)) {
                m_owners.insert(m_owners.end(), size_t(variable.rows.size()), m_vectors.size());
                m_vectors.emplace_back(variable, lane);
            }
            lane += variable.rows.size();
        }
        for (qsizetype lane = 0; lane < vector; ++lane)
            setLive(lane, true);
        std::ranges::sort(m_ends, std::greater<>(), &End::sample);
    }

    /// Goes to the next sample, which is \a sample; the first one is 0. True when a value differs
    /// from that of the sample before, or there was none.
    bool advance(qsizetype sample)
    {
        const int position = int(sample % RowBlock::kRows);
        if (position == 0)
            m_block.load(sample);
        m_row = m_block.row(position);
        takeEnds(sample);
        bool isChange = !m_ended.isEmpty();
        for (size_t i = 0; i < m_changed.size(); ++i) {
            const quint64 changed = sample == 0 ? ~quint64(0) : m_row[i] ^ m_last[i];
            m_last[i] = m_row[i];
            m_changed[i] = changed & m_live[i];
            isChange |= m_changed[i] != 0;
        }
        return isChange;
    }

    /// Writes what differs.
    void write()
    {
        m_out.append(std::exchange(m_ended, {}));
        const auto levelWords = size_t(m_levelCount + 63) / 64;
        for (size_t i = 0; i < levelWords; ++i) {
            const quint64 levels = m_changed[i] & lowerBits(m_levelCount - qsizetype(i) * 64);
            if (levels != 0)
                m_out.taken(m_levels.write(m_out.room(LevelLines::kRoom), i, levels, m_row[i]));
        }
        qsizetype done = m_levelCount; // lanes
        for (size_t i = size_t(done) / 64; i < m_changed.size(); ++i) {
            const auto first = qsizetype(i) * 64;
            for (;;) {
                const quint64 left = m_changed[i] & ~lowerBits(done - first);
                if (left == 0)
                    break;
                const qsizetype lane = first + std::countr_zero(left);
                VectorLine &vector = m_vectors[m_owners[size_t(lane - m_levelCount)]];
                vector.write(m_out, m_row);
                done = vector.end();
            }
        }
    }

private:
    /// Where a variable has no more samples.
    struct End
    {
        qsizetype sample = 0;
        qsizetype lane = 0;
        qsizetype width = 0;
        QByteArray identifier;
    };

    static bool isLevel(const Variable &variable) { return variable.rows.size() == 1; }

    /// Ones in the lowest \a count bits; in none or all of them beyond the word's ends.
    static quint64 lowerBits(qsizetype count)
    {
        if (count <= 0)
            return 0;
        return count >= 64 ? ~quint64(0) : (quint64(1) << count) - 1;
    }

    static QList<QByteArray> levelIdentifiers(const std::vector<Variable> &variables)
    {
        QList<QByteArray> identifiers;
        for (const Variable &variable : variables) {
            if (isLevel(variable))
                identifiers.append(variable.identifier);
        }
        return identifiers;
    }

    static std::vector<QBitArray> lanesOf(const std::vector<Variable> &variables)
    {
        std::vector<QBitArray> lanes;
        for (const bool levels : {true, false}) {
            for (const Variable &variable : variables) {
                if (isLevel(variable) == levels)
                    lanes.insert(lanes.end(), variable.rows.rbegin(), variable.rows.rend());
            }
        }
        return lanes;
    }

    void setLive(qsizetype lane, bool live)
    {
        const quint64 bit = quint64(1) << (lane % 64);
        quint64 &word = m_live[size_t(lane / 64)];
        word = live ? word | bit : word & ~bit;
    }

    void takeEnds(qsizetype sample)
    {
        for (; !m_ends.empty() && m_ends.back().sample <= sample; m_ends.pop_back()) {
            const End &end = m_ends.back();
            m_ended += (end.width == 1 ? "x" : "bx ") + end.identifier + '\n';
            for (qsizetype i = 0; i < end.width; ++i)
                setLive(end.lane + i, false);
        }
    }

    ByteSink &m_out;
    LevelLines m_levels;
    RowBlock m_block;
    qsizetype m_levelCount = 0;
    std::vector<VectorLine> m_vectors;
    std::vector<size_t> m_owners; ///< the vector of each lane behind the single bits
    std::vector<End> m_ends;      ///< next one last
    std::vector<quint64> m_live;  ///< one bit a lane: it still has samples to show
    std::vector<quint64> m_last;  ///< the row before
    std::vector<quint64> m_changed;
    const quint64 *m_row = nullptr; ///< in m_block
    QByteArray m_ended;             ///< lines of the variables that are at their end
};

std::vector<Variable> declareVariables(const ExportWindow &window, Scope &top)
{
    std::vector<Variable> variables;
    for (const auto &column : readExportColumns(window, /*includeMembers=*/false)) {
        Variable variable{.identifier = identifierAt(qsizetype(variables.size()) + 1),
                          .rows = column->rows()};
        if (variable.rows.isEmpty())
            continue;
        variable.samples = std::ranges::min(variable.rows, {}, &QBitArray::size).size();
        top.declare(column->name(), variable.rows.size(), variable.identifier);
        variables.push_back(std::move(variable));
    }
    return variables;
}

void writeHead(ByteSink &out, const PlainVcdHead &head, const QString &timescale, const Scope &top)
{
    out.appendText(QStringLiteral("$date %1 $end\n").arg(head.written.toString(Qt::ISODate)));
    out.append("$version Signal Scope $end\n");
    out.appendText(QStringLiteral("$timescale %1 $end\n").arg(timescale));
    top.write(out);
    out.append("$enddefinitions $end\n");
}

} // namespace

VcdTimescale timescaleOf(qint64 period)
{
    Q_ASSERT(period > 0);
    static constexpr std::array<const char *, 5> units{"ps", "ns", "us", "ms", "s"};
    VcdTimescale scale{.text = {}, .steps = period};
    size_t zeros = 0;
    for (; zeros < 3 * (units.size() - 1) && scale.steps % 10 == 0; ++zeros)
        scale.steps /= 10;
    scale.text =
        u'1' + QString(qsizetype(zeros % 3), u'0') + u' ' + QLatin1String(units[zeros / 3]);
    return scale;
}

bool writePlainVcd(QIODevice &device, const PlainVcdHead &head, const ExportWindow &window,
                   PlainVcdExtent *extent)
{
    Scope top(vcdWord(head.moduleName));
    const QByteArray trigger = identifierAt(0);
    top.declare(kTriggerName, 1, trigger);
    const std::vector<Variable> variables = declareVariables(window, top);
    const qsizetype samples =
        variables.empty() ? 0 : std::ranges::max(variables, {}, &Variable::samples).samples;
    const VcdTimescale scale = timescaleOf(head.period);
    if (extent)
        *extent = {.variables = qint64(variables.size()) + 1, .endTime = samples * scale.steps};

    ByteSink out(device);
    writeHead(out, head, scale.text, top);
    ValueChanges changes(out, variables);
    const auto writeTrigger = [&](char level) { out.append(level + trigger + '\n'); };
    changes.advance(0);
    out.append("#0\n$dumpvars\n");
    writeTrigger(samples == 0 ? 'x' : head.triggerSample == 0 ? '1' : '0');
    changes.write();
    out.append("$end\n");
    for (qsizetype i = 1; i < samples && out.isGood(); ++i) {
        const bool isEdge = i == head.triggerSample || i - 1 == head.triggerSample;
        if (!changes.advance(i) && !isEdge)
            continue;
        out.taken(writeStamp(out.room(kStampRoom), i * scale.steps));
        if (isEdge)
            writeTrigger(i == head.triggerSample ? '1' : '0');
        changes.write();
    }
    if (samples > 0)
        out.taken(writeStamp(out.room(kStampRoom), samples * scale.steps));
    return out.finish();
}

} // namespace KEO
