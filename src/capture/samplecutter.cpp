#include "samplecutter.h"

#include "devicemodels.h"

#include <base/bitwords.h>
#include <config/coreconfig.h>
#include <config/litecoreconfig.h>

#include <QtEndian>

#include <algorithm>
#include <vector>

namespace KEO {

namespace {

/// The sections as one bit string, the bits of a byte from its lowest up as in QBitArray. Clear
/// bits stand around it, so that 64 bits can be read wherever at least one of them is inside.
class RawBits final
{
public:
    RawBits(const QList<QBitArray> &sections, qsizetype clearBitsBefore)
        : m_first((clearBitsBefore + 7) / 8 * 8), m_end(m_first)
    {
        qsizetype size = 0;
        for (const QBitArray &section : sections)
            size += section.size();
        m_bytes.resize(size_t((m_first + size) / 8 + kGuardBytes));
        for (const QBitArray &section : sections)
            append(section);
    }

    qsizetype size() const { return m_end - m_first; }
    bool bit(qsizetype position) const { return word(position) & 1; }
    /// 64 bits from \a position on, the first one lowest. Positions below 0 reach into the clear
    /// bits in front.
    quint64 word(qsizetype position) const
    {
        const size_t at = size_t(m_first + position);
        const uchar *bytes = m_bytes.data() + at / 8;
        const int shift = int(at % 8);
        const quint64 low = qFromLittleEndian<quint64>(bytes) >> shift;
        return shift == 0 ? low : low | quint64(bytes[8]) << (64 - shift);
    }

private:
    static constexpr qsizetype kGuardBytes = 24;

    void append(const QBitArray &section)
    {
        const uchar *source = reinterpret_cast<const uchar *>(section.bits());
        const qsizetype sourceBytes = (section.size() + 7) / 8;
        uchar *target = m_bytes.data() + m_end / 8;
        const int shift = int(m_end % 8);
        m_end += section.size();
        if (shift == 0) {
            std::copy(source, source + sourceBytes, target);
            return;
        }
        for (qsizetype i = 0; i < sourceBytes; ++i) {
            target[i] |= uchar(source[i] << shift);
            target[i + 1] = uchar(source[i] >> (8 - shift));
        }
    }

    std::vector<uchar> m_bytes;
    qsizetype m_first; // bit positions in m_bytes
    qsizetype m_end;
};

/// The rows of a window, numbered from the end of the raw bits.
class Rows final
{
public:
    /// Rows of \a width bits, \a stride bits apart, and at most \a most of them.
    Rows(const RawBits &raw, qsizetype width, qsizetype stride, qint64 most)
        : m_raw(raw),
          m_width(width),
          m_stride(stride),
          m_count(std::min<qint64>(most, (raw.size() + stride - 1) / stride))
    {
    }

    qsizetype count() const { return m_count; }
    bool isMarked(qsizetype row) const { return m_raw.bit(start(row)); }
    /// 64 bits of a row from \a column on; past the last column stand bits of other rows.
    quint64 word(qsizetype row, qsizetype column) const { return m_raw.word(start(row) + column); }

private:
    qsizetype start(qsizetype row) const { return m_raw.size() - row * m_stride - m_width; }

    const RawBits &m_raw;
    qsizetype m_width;
    qsizetype m_stride;
    qsizetype m_count;
};

/// The first marked row. A mark in row 0 says as little as none: the row before it is the last one.
qsizetype markedRow(const Rows &rows)
{
    for (qsizetype row = 0; row < rows.count(); ++row) {
        if (rows.isMarked(row))
            return row == 0 ? rows.count() : row;
    }
    return rows.count();
}

/// The row before \a row in the ring.
qsizetype previousRow(qsizetype row, qsizetype count)
{
    return (row == 0 ? count : row) - 1;
}

qsizetype oldestRow(const Rows &rows, const CaptureGeometry &geometry)
{
    const qsizetype count = rows.count();
    qsizetype row = previousRow(markedRow(rows) - 1, count);
    if (geometry.dynamic)
        row = previousRow(row, count);
    const qint64 offset = (row - geometry.triggerPosition) % count;
    return offset < 0 ? offset + count : offset;
}

/// Samples of up to 64 columns from \a firstColumn of a row on, as words of 64 samples each.
class ColumnGroup final
{
public:
    ColumnGroup(const Rows &rows, qsizetype oldest, qsizetype firstColumn, qsizetype columns)
        : m_wordsPerColumn((rows.count() + 63) / 64), m_words(size_t(columns * m_wordsPerColumn))
    {
        qsizetype row = oldest;
        qsizetype left = rows.count();
        for (qsizetype word = 0; word < m_wordsPerColumn; ++word) {
            BitSquare square = {};
            for (qsizetype i = 0; i < std::min<qsizetype>(left, 64); ++i) {
                square[size_t(i)] = rows.word(row, firstColumn);
                row = row + 1 == rows.count() ? 0 : row + 1;
            }
            left -= 64;
            transposeBits(square);
            for (qsizetype c = 0; c < columns; ++c)
                m_words[size_t(c * m_wordsPerColumn + word)] = qToLittleEndian(square[size_t(c)]);
        }
    }

    QBitArray samples(qsizetype column, qsizetype count) const
    {
        const quint64 *words = m_words.data() + column * m_wordsPerColumn;
        return QBitArray::fromBits(reinterpret_cast<const char *>(words), count);
    }

private:
    qsizetype m_wordsPerColumn;
    std::vector<quint64> m_words;
};

/// The samples of \a columns columns from \a firstColumn of the rows on, in ring order from row
/// \a oldest on.
QList<QBitArray> columnSamples(const Rows &rows, qsizetype oldest, qsizetype firstColumn,
                               qsizetype columns)
{
    QList<QBitArray> samples;
    samples.reserve(columns);
    for (qsizetype first = 0; first < columns; first += 64) {
        const qsizetype groupColumns = std::min<qsizetype>(columns - first, 64);
        const ColumnGroup group(rows, oldest, firstColumn + first, groupColumns);
        for (qsizetype c = 0; c < groupColumns; ++c)
            samples.append(group.samples(c, rows.count()));
    }
    return samples;
}

} // namespace

CaptureGeometry captureGeometry(const CoreConfig &core)
{
    return {signalBits(core.signals), core.requiredRegisterWidth(), core.capture_amount,
            core.trigger_pos, core.dynamic != 0};
}

QList<QBitArray> cutSamples(const QList<QBitArray> &sections, const CaptureGeometry &geometry)
{
    if (geometry.columns <= 0 || geometry.registerWidth <= geometry.columns)
        return {};
    const RawBits raw(sections, geometry.columns + 1);
    const Rows rows(raw, geometry.columns + 1, geometry.registerWidth, geometry.captureAmount);
    if (rows.count() <= 0)
        return {};
    return columnSamples(rows, oldestRow(rows, geometry), 1, geometry.columns);
}

bool dependsOnDevice(const LiteCoreConfig &core, bool isZeo)
{
    return core.implemention == 0 && !isZeo;
}

/// The form 0 of the core writes late in the models that do: the address has wrapped round when the
/// last row is written, so the newest row stands first. Other forms, and designs of a .zeo file,
/// make up for it themselves.
PlainGeometry plainGeometry(const LiteCoreConfig &core, const QString &deviceModel, bool isZeo)
{
    const bool isLate = dependsOnDevice(core, isZeo) && writesOneRowLate(deviceModel);
    return {signalBits(core.signals), core.capture_amount,
            isLate ? PlainGeometry::FirstRow::Newest : PlainGeometry::FirstRow::Oldest};
}

QList<QBitArray> cutPlainSamples(const QList<QBitArray> &sections, const PlainGeometry &geometry)
{
    if (geometry.columns <= 0)
        return {};
    const RawBits raw(sections, geometry.columns);
    const Rows rows(raw, geometry.columns, geometry.columns, geometry.captureAmount);
    if (rows.count() <= 0)
        return {};
    // With one row only, the newest is the oldest as well.
    const bool moves = geometry.firstRow == PlainGeometry::FirstRow::Newest && rows.count() > 1;
    return columnSamples(rows, moves ? 1 : 0, 0, geometry.columns);
}

} // namespace KEO
