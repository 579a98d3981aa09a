#pragma once

#include <QBitArray>
#include <QByteArray>

#include <vector>

namespace Sim {

/// The \a count bits of \a bits from \a from as a number, the first one most significant. At most
/// 64; bits past the end count as clear.
quint64 numberAt(const QBitArray &bits, qsizetype from, qsizetype count);

/// A field of \a width bits that ends with \a value, least significant bit last.
QBitArray rightAligned(quint64 value, int width);

/// As many of the last bits of \a field as asked for, packed like a row of BitMatrix: bit i of the
/// result stands in word i / 64 under 1 << (i % 64). A shorter field is filled with clear bits in
/// front.
std::vector<quint64> packLast(const QBitArray &field, int width);

/// Bits in a table of rows of one width, packed so that a row is read 64 bits at a time.
/// Bit \a column of a row stands in word column / 64 under 1 << (column % 64).
class BitMatrix final
{
public:
    explicit BitMatrix(int width = 0);

    [[nodiscard]] int width() const { return m_width; }
    [[nodiscard]] qint64 rows() const { return m_rows; }
    [[nodiscard]] int wordsPerRow() const { return m_words; }
    /// The words of a row; valid until the next appendRow. A table without columns has none.
    [[nodiscard]] const quint64 *row(qint64 index) const { return m_data.data() + index * m_words; }
    [[nodiscard]] bool bit(qint64 row, int column) const;

    /// Adds a row of clear bits at the end.
    void appendRow();
    /// Sets a bit of the last row.
    void setInLastRow(int column);

private:
    int m_width = 0;
    int m_words = 0;
    qint64 m_rows = 0;
    std::vector<quint64> m_data;
};

/// Puts bit runs one behind the other and gives them out as one bit array.
class BitWriter final
{
public:
    explicit BitWriter(qsizetype expectedBits);

    /// Appends \a count bits, at most 64, from the lowest upward.
    void append(quint64 bits, int count);
    void appendZeros(qsizetype count);
    /// Appends a packed row, see BitMatrix.
    void appendPacked(const quint64 *words, int count);
    [[nodiscard]] QBitArray take();

private:
    std::vector<quint64> m_words;
    qsizetype m_size = 0;
};

} // namespace Sim
