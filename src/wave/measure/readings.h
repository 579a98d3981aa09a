#pragma once

#include <wave_data/clockperiod.h>

#include <QString>

#include <optional>

namespace WaveMonitor {

/// What is measured in a window, in samples.
struct Readings
{
    std::optional<int> pointer; ///< below the pointer
    int trigger = 0;
    std::optional<int> marker;       ///< the active one
    std::optional<int> markerBefore; ///< the one that was active before it
    QString row;                     ///< name of the row whose edges are counted
    std::optional<qsizetype> edges;  ///< between the two markers
    std::optional<ClockPeriod> period;

    bool operator==(const Readings &other) const = default;
};

/// How much is told of a distance.
enum class Detail { Samples, Time, Frequency };

/// One line of all that there is to tell.
[[nodiscard]] QString readOut(const Readings &readings, Detail detail);

} // namespace WaveMonitor
