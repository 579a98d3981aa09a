#pragma once

#include <QBitArray>
#include <QtGlobal>

#include <vector>

namespace KEO {

/// Turns samples kept per signal into samples kept per row, 64 rows at a time. Bit j of a row is
/// lane j; lanes that are at their end give 0. Its size depends on the number of lanes alone.
class RowBlock final
{
public:
    static constexpr int kRows = 64;

    explicit RowBlock(std::vector<QBitArray> lanes);

    /// Makes the rows from sample \a first on, a multiple of kRows, the present ones.
    void load(qsizetype first);
    /// The words of a present row, lane 0 in bit 0 of the first. One word more than wordsPerRow may
    /// be read.
    [[nodiscard]] const quint64 *row(int position) const
    {
        return m_rows.data() + qsizetype(position) * m_wordsPerRow;
    }
    [[nodiscard]] qsizetype wordsPerRow() const { return m_wordsPerRow; }

private:
    std::vector<QBitArray> m_lanes;
    qsizetype m_wordsPerRow;
    std::vector<quint64> m_rows;
};

/// \a count bits (1 to 64) of a row from lane \a lane on; the rest of the word is 0.
inline quint64 rowBits(const quint64 *row, qsizetype lane, int count)
{
    const quint64 *word = row + lane / 64;
    const int shift = int(lane % 64);
    quint64 bits = word[0] >> shift;
    if (shift != 0)
        bits |= word[1] << (64 - shift);
    return bits & ~quint64(0) >> (64 - count);
}

} // namespace KEO
