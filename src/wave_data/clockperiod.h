#pragma once

#include <QString>

#include <optional>

namespace WaveMonitor {

/// Clock period as the user gives it: a number and one of the units us, ns and ps.
struct ClockPeriod
{
    int number = 1; ///< 1 to 9999999
    QString unit = QStringLiteral("us");

    [[nodiscard]] qint64 picoseconds() const;
    bool operator==(const ClockPeriod &other) const = default;
};

/// Reads a period or a frequency, such as "10 ns", "2.5us" or "100 MHz". Nothing for another text,
/// or for a period below 1 ps or above 9999999 us.
[[nodiscard]] std::optional<ClockPeriod> readClockPeriod(const QString &text);

/// How long \a samples take, such as "1.25 us"; with a sign when negative.
[[nodiscard]] QString timeText(qint64 samples, const ClockPeriod &period);
/// How often something comes that takes so long, such as "800 kHz"; empty for 0 samples.
[[nodiscard]] QString frequencyText(qint64 samples, const ClockPeriod &period);

} // namespace WaveMonitor
