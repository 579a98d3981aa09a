#include "matchunit.h"

#include "bits.h"

#include <algorithm>

namespace Sim {

namespace {

constexpr int kControlBits = 4;
constexpr int kCounterBits = 32;

/// Order of two packed numbers whose first bit is the most significant: below, at or above 0.
int compareNumbers(const quint64 *left, const std::vector<quint64> &right)
{
    for (size_t i = 0; i < right.size(); ++i) {
        const quint64 different = left[i] ^ right[i];
        if (different != 0)
            return (left[i] & different & (~different + 1)) != 0 ? 1 : -1;
    }
    return 0;
}

} // namespace

MatchUnit::MatchUnit(int portWidth)
    : m_width(portWidth), m_compare(packLast({}, portWidth)), m_mask(m_compare), m_edge(m_compare)
{
}

void MatchUnit::setControl(const QBitArray &field)
{
    const quint64 control = numberAt(field, field.size() - kControlBits, kControlBits);
    m_continuous = (control & 0b1000) != 0;
    m_function = int(control & 0b0111);
}

void MatchUnit::setCounter(const QBitArray &field)
{
    const qsizetype bits = std::min<qsizetype>(field.size(), kCounterBits);
    const quint64 load = numberAt(field, field.size() - bits, bits);
    m_wanted = quint32(std::min<quint64>(load + 1, 0xffffffff));
}

bool MatchUnit::hits(const quint64 *now, const quint64 *before) const
{
    switch (m_function) {
    case 0:
        return equals(now, before);
    case 1:
        return !equals(now, before);
    case 2:
        return compareNumbers(now, m_compare) > 0;
    case 3:
        return compareNumbers(now, m_mask) < 0;
    case 4:
        return compareNumbers(now, m_compare) >= 0;
    case 5:
        return compareNumbers(now, m_mask) <= 0;
    case 6:
        return compareNumbers(now, m_compare) >= 0 && compareNumbers(now, m_mask) <= 0;
    default:
        return compareNumbers(now, m_compare) < 0 || compareNumbers(now, m_mask) > 0;
    }
}

bool MatchUnit::count(bool hit)
{
    if (hit)
        m_counted = std::min(m_counted + 1, m_wanted);
    else if (m_continuous)
        m_counted = 0;
    return m_counted >= m_wanted;
}

std::vector<quint64> MatchUnit::packed(const QBitArray &field) const
{
    return packLast(field, m_width);
}

bool MatchUnit::equals(const quint64 *now, const quint64 *before) const
{
    for (size_t i = 0; i < m_compare.size(); ++i) {
        const quint64 compare = m_compare[i];
        const quint64 mask = m_mask[i];
        const quint64 edge = m_edge[i];
        const quint64 rising = now[i] & ~before[i];
        const quint64 falling = ~now[i] & before[i];
        const quint64 changed = rising | falling;
        const quint64 failed =
            (~edge & mask & (now[i] ^ compare)) | (edge & ~mask & ~compare & ~rising) |
            (edge & ~mask & compare & ~falling) | (edge & mask & ~compare & ~changed) |
            (edge & mask & compare & changed);
        if (failed != 0)
            return false;
    }
    return true;
}

} // namespace Sim
