#pragma once

#include <QBitArray>
#include <QList>
#include <QStringList>

#include <vector>

namespace KEO {

struct CoreConfig;

/// What the ports of a core were at each sample of a captured window, as far as that was captured:
/// the bits of a port are found by name among the captured signals. Buses make no difference, a
/// member is a signal as any other. The samples are shared.
class PortSamples final
{
public:
    /// \a captured: in the flat order of core.signals.
    PortSamples(const CoreConfig &core, const QList<QBitArray> &captured);
    /// \a names: of \a captured, one each, as the design has them. Not those that a user has given:
    /// renaming a signal leaves its original name with it.
    PortSamples(const CoreConfig &core, const QStringList &names, QList<QBitArray> captured);

    /// Of the longest signal.
    [[nodiscard]] qsizetype samples() const { return m_samples; }
    /// Bit \a bit of port \a port, bit 0 being its first signal; null if it was not captured, or
    /// under one name with different samples. It may be shorter than the window, which leaves the
    /// rest unknown. Borrowed.
    [[nodiscard]] const QBitArray *bit(int port, int bit) const;

private:
    QList<QBitArray> m_captured;
    std::vector<std::vector<qsizetype>> m_places; ///< in m_captured, by port and bit; or -1
    qsizetype m_samples = 0;
};

} // namespace KEO
