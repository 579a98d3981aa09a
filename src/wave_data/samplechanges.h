#pragma once

#include <QBitArray>

#include <span>

namespace WaveMonitor {

/// Samples \a base, a multiple of 64, to \a base + 63 at which a row changes, a bit each.
[[nodiscard]] quint64 changesFrom(std::span<const QBitArray> members, qsizetype base);

/// Walks the samples at which a row changes its value, 64 samples at a step. The row's value at a
/// sample is made of one bit of each member; a member without that sample reads as 0 there. The
/// members are borrowed.
class SampleChanges final
{
public:
    /// Looks at samples \a from (not negative) up to but not including \a limit.
    SampleChanges(std::span<const QBitArray> members, qsizetype from, qsizetype limit);

    /// The next sample that differs from the one before it, or the limit when none is left. Sample
    /// 0 has none before it and so never differs.
    qsizetype next();

private:
    std::span<const QBitArray> m_members;
    qsizetype m_limit;
    qsizetype m_base;  ///< first sample of the word at hand, a multiple of 64
    quint64 m_pending; ///< changes of that word that are still to be told, bit k is m_base + k
};

} // namespace WaveMonitor
