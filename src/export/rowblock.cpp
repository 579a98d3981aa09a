#include "rowblock.h"

#include <base/bitwords.h>

#include <algorithm>
#include <utility>

namespace KEO {

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
        BitSquare square = {};
        const qsizetype used = std::min<qsizetype>(64, lanes - group * 64);
        for (qsizetype i = 0; i < used; ++i)
            square[size_t(i)] = bitWord(m_lanes[size_t(group * 64 + i)], first);
        transposeBits(square);
        for (qsizetype i = 0; i < kRows; ++i)
            m_rows[size_t(i * m_wordsPerRow + group)] = square[size_t(i)];
    }
}

} // namespace KEO
