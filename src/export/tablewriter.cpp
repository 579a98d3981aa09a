#include "tablewriter.h"

#include "rowblock.h"

#include <wave_data/radixtext.h>

#include <QByteArray>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

using WaveMonitor::DataFormat;
using WaveMonitor::radixText;
using WaveMonitor::radixTextCapacity;

namespace KEO {

namespace {

/// Texts of eight neighbouring one-bit cells with their separators, for every value they can have.
class CellTexts final
{
public:
    static constexpr int kCells = 8;
    static constexpr int kMaximumCell = 3; // two bytes of separator, one digit
    using Text = std::array<char, kCells * kMaximumCell>;

    explicit CellTexts(QByteArrayView separator) : m_cell(int(separator.size()) + 1)
    {
        Q_ASSERT(m_cell <= kMaximumCell);
        for (size_t byte = 0; byte < m_texts.size(); ++byte) {
            char *to = m_texts[byte].data();
            for (int bit = 0; bit < kCells; ++bit) {
                to = std::copy(separator.begin(), separator.end(), to);
                *to++ = byte >> bit & 1 ? '1' : '0';
            }
        }
    }

    /// Writes \a count cells (at most 64). Always copies whole texts, so that the size of a copy is
    /// known to the compiler: a text more than needed must fit.
    char *write(char *to, quint64 bits, int count) const
    {
        const int whole = kCells * m_cell;
        for (; count >= kCells; count -= kCells, bits >>= kCells, to += whole)
            std::memcpy(to, m_texts[bits & 0xFF].data(), sizeof(Text));
        std::memcpy(to, m_texts[bits & 0xFF].data(), sizeof(Text));
        return to + count * m_cell;
    }

private:
    int m_cell;
    std::array<Text, 256> m_texts{};
};

/// One column's share of a row's bits. The least significant bit has the lowest lane, so that the
/// bits of a row are the value.
struct TableColumn
{
    qsizetype lane = 0;
    qsizetype width = 0;
    qsizetype samples = 0; ///< from here on cells are empty
    DataFormat::Type format = DataFormat::Binary;
};

/// A bus cell that is made anew only when the value changed.
class BusCell final
{
public:
    BusCell(const TableColumn &column, QByteArrayView separator)
        : m_column(column),
          m_separator(separator.size()),
          m_value(size_t(column.width + 63) / 64),
          m_text(separator.size() + radixTextCapacity(column.width), Qt::Uninitialized)
    {
        std::copy(separator.begin(), separator.end(), m_text.begin());
    }

    /// The cell with its separator.
    QByteArrayView text(const quint64 *row)
    {
        bool changed = m_length == 0;
        for (size_t i = 0; i < m_value.size(); ++i) {
            const auto before = qsizetype(i) * 64;
            const int count = int(std::min<qsizetype>(64, m_column.width - before));
            const quint64 word = rowBits(row, m_column.lane + before, count);
            changed |= word != m_value[i];
            m_value[i] = word;
        }
        if (changed)
            m_length = m_separator + radixText(m_column.format, m_value.data(), m_column.width,
                                               m_text.data() + m_separator);
        return QByteArrayView(m_text.constData(), m_length);
    }

private:
    TableColumn m_column;
    qsizetype m_separator;
    std::vector<quint64> m_value;
    QByteArray m_text;
    qsizetype m_length = 0;
};

/// Part of a row: neighbouring one-bit cells, a bus cell, or separators of empty cells.
struct RowPart
{
    enum class Kind { Bits, Bus, Empty };
    Kind kind = Kind::Bits;
    qsizetype lane = 0;  ///< of the first of several one-bit cells
    qsizetype count = 0; ///< of cells, or of empty ones
    size_t bus = 0;      ///< position of the bus cell
};

/// Writes the rows of a table. A plan says which parts a row has; it holds until the next column
/// comes to its end.
class TableWriter final
{
public:
    TableWriter(ByteSink &out, const ExportColumns &columns, const TableStyle &style)
        : m_out(out), m_style(style), m_cellTexts(style.separator), m_block(addColumns(columns))
    {
    }

    void write(const TableRows &rows)
    {
        qint64 time = rows.firstTime;
        for (qsizetype first = 0; first < rows.count && m_out.isGood(); first += RowBlock::kRows) {
            m_block.load(first);
            const qsizetype end = std::min<qsizetype>(rows.count, first + RowBlock::kRows);
            for (qsizetype sample = first; sample < end; ++sample, time += rows.period) {
                if (sample >= m_planEnd)
                    makePlan(sample);
                writeLead(sample, time);
                writeCells(m_block.row(int(sample - first)));
                m_out.append(m_style.lineEnd);
            }
        }
    }

private:
    std::vector<QBitArray> addColumns(const ExportColumns &columns)
    {
        std::vector<QBitArray> lanes;
        for (const auto &column : columns) {
            const QList<QBitArray> rows = column->rows();
            TableColumn added{.lane = qsizetype(lanes.size()),
                              .width = rows.size(),
                              .samples = rows.isEmpty() ? 0 : rows.first().size(),
                              .format = column->format()};
            for (const QBitArray &row : rows)
                added.samples = std::min(added.samples, row.size());
            lanes.insert(lanes.end(), rows.rbegin(), rows.rend());
            m_columns.push_back(added);
            if (added.width > 1)
                m_buses.emplace_back(added, m_style.separator);
        }
        return lanes;
    }

    void writeLead(qsizetype sample, qint64 time)
    {
        if (m_style.lead == TableStyle::Lead::Time) {
            m_out.appendNumber(time);
            return;
        }
        m_out.appendNumber(sample);
        m_out.append(m_style.separator);
        m_out.appendNumber(time);
        m_out.append(m_style.separator);
        m_out.append(sample == m_style.triggerSample ? "1" : "0");
    }

    void makePlan(qsizetype sample)
    {
        m_plan.clear();
        m_planEnd = std::numeric_limits<qsizetype>::max();
        size_t bus = 0;
        for (const TableColumn &column : m_columns) {
            const size_t ownBus = column.width > 1 ? bus++ : bus;
            const bool ended = sample >= column.samples;
            if (!ended)
                m_planEnd = std::min(m_planEnd, column.samples);
            if (!ended && column.width > 1)
                m_plan.push_back({.kind = RowPart::Kind::Bus, .bus = ownBus});
            else
                appendCells(ended ? RowPart::Kind::Empty : RowPart::Kind::Bits, column.lane);
        }
    }

    void appendCells(RowPart::Kind kind, qsizetype lane)
    {
        const bool extends =
            !m_plan.empty() && m_plan.back().kind == kind &&
            (kind == RowPart::Kind::Empty || m_plan.back().lane + m_plan.back().count == lane);
        if (extends)
            ++m_plan.back().count;
        else
            m_plan.push_back({.kind = kind, .lane = lane, .count = 1});
    }

    void writeCells(const quint64 *row)
    {
        for (const RowPart &part : m_plan) {
            switch (part.kind) {
            case RowPart::Kind::Bits:
                writeBits(row, part);
                break;
            case RowPart::Kind::Bus:
                m_out.append(m_buses[part.bus].text(row));
                break;
            case RowPart::Kind::Empty:
                for (qsizetype i = 0; i < part.count; ++i)
                    m_out.append(m_style.separator);
                break;
            }
        }
    }

    void writeBits(const quint64 *row, const RowPart &part)
    {
        constexpr int most = 64;
        for (qsizetype done = 0; done < part.count; done += most) {
            const int count = int(std::min<qsizetype>(most, part.count - done));
            char *to = m_out.room((most + CellTexts::kCells) * CellTexts::kMaximumCell);
            const quint64 bits = rowBits(row, part.lane + done, count);
            m_out.taken(m_cellTexts.write(to, bits, count));
        }
    }

    ByteSink &m_out;
    TableStyle m_style;
    CellTexts m_cellTexts;
    std::vector<TableColumn> m_columns;
    std::vector<BusCell> m_buses; ///< of the columns wider than one bit, in order
    RowBlock m_block;             ///< built from the columns, so it stands behind them
    std::vector<RowPart> m_plan;
    qsizetype m_planEnd = 0; ///< first sample for which the plan is wrong
};

} // namespace

void writeTableRows(ByteSink &out, const ExportColumns &columns, const TableStyle &style,
                    const TableRows &rows)
{
    if (!columns.empty())
        TableWriter(out, columns, style).write(rows);
}

} // namespace KEO
