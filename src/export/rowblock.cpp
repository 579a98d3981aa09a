#include "rowblock.h"

#include <wave_data/bitwords.h>

#include <algorithm>
#include <utility>

namespace KEO {

void transposeBits(quint64 (&square)[64])
{
    // Swap the off-diagonal quarters of squares of 64, 32, ... 2 bits.
    quint64 mask = 0x00000000FFFFFFFFU;
    for (int half = 32; half != 0; half >>= 1, mask ^= mask << half) {
        for (int r = 0; r < 64; r = (r + half + 1) & ~half) {
            const quint64 swapped = (square[r] >> half ^ square[r + half]) & mask;
            square[r] ^= swapped << half;
            square[r + half] ^= swapped;
        }
    }
}

RowBlock::RowBlock(std::vector<QBitArray> lanes)
    : m_lanes(std::move(lanes)),
      m_wordsPerRow(qsizetype(m_lanes.size() + 63) / 64),
      m_rows(size_t(m_wordsPerRow * kRows + 1))
{
}

void RowBlock::load(qsizetype first)
{
    const auto lanes = qsizetype(m_lanes.size());
    for (qsizetype group = 0; group < m_wordsPerRow; ++group) {
        quint64 square[64] = {};
        const qsizetype used = std::min<qsizetype>(64, lanes - group * 64);
        for (qsizetype i = 0; i < used; ++i)
            square[i] = WaveMonitor::bitWord(m_lanes[size_t(group * 64 + i)], first);
        transposeBits(square);
        for (qsizetype i = 0; i < kRows; ++i)
            m_rows[size_t(i * m_wordsPerRow + group)] = square[i];
    }
}

} // namespace KEO
