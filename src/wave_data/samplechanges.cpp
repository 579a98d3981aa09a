#include "samplechanges.h"

#include <base/bitwords.h>

#include <algorithm>
#include <bit>

namespace WaveMonitor {

namespace {

constexpr qsizetype kWord = 64;

} // namespace

quint64 changesFrom(std::span<const QBitArray> members, qsizetype base)
{
    quint64 changes = 0;
    for (const QBitArray &member : members) {
        const quint64 word = KEO::bitWord(member, base);
        const quint64 before = base == 0 ? word & 1 : KEO::bitWord(member, base - 8) >> 7 & 1;
        changes |= word ^ (word << 1 | before);
    }
    return changes;
}

SampleChanges::SampleChanges(std::span<const QBitArray> members, qsizetype from, qsizetype limit)
    : m_members(members),
      m_limit(limit),
      m_base(from / kWord * kWord),
      m_pending(changesFrom(m_members, m_base) & ~quint64(0) << (from % kWord))
{
}

qsizetype SampleChanges::next()
{
    while (m_pending == 0) {
        m_base += kWord;
        if (m_base >= m_limit)
            return m_limit;
        m_pending = changesFrom(m_members, m_base);
    }
    const qsizetype sample = m_base + std::countr_zero(m_pending);
    m_pending &= m_pending - 1;
    return std::min(sample, m_limit);
}

} // namespace WaveMonitor
