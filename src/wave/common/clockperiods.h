#pragma once

#include <wave_data/clockperiod.h>

#include <QMap>
#include <QObject>

#include <optional>

namespace WaveMonitor {

/// The periods of the cores' sample clocks, as far as the user has told them. The viewers of a
/// project and its export share one; it is saved nowhere. GUI thread.
class ClockPeriods final : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Core -1 stands for none, as in a viewer.
    [[nodiscard]] std::optional<ClockPeriod> ofCore(int core) const;
    void set(int core, const std::optional<ClockPeriod> &period);
    [[nodiscard]] const QMap<int, ClockPeriod> &all() const { return m_periods; }
    /// In place of all others.
    void setAll(const QMap<int, ClockPeriod> &periods);

Q_SIGNALS:
    void changed();

private:
    QMap<int, ClockPeriod> m_periods;
};

} // namespace WaveMonitor
