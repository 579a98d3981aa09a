#pragma once

#include <limits>

namespace KEO {

/// How fast a manager asks a server. As it stands, a pace that leaves a window and any cable their
/// time: the next section and the next poll are asked for by the clock, whatever has been answered.
struct CapturePace
{
    static constexpr int kUnbounded = std::numeric_limits<int>::max();
    /// What has not been answered for so many ms does not count as waiting any more: it may be
    /// lost, and bounds must not hold up a run for good.
    static constexpr int kAnswerPatience = 3000;

    int sectionPause = 50;             ///< ms before the first section and between requests
    int sectionsInFlight = kUnbounded; ///< sections that may wait for their answers at once
    int pollInterval = 500;            ///< ms between polls of a standard core
    /// Polls that may wait for their answers at once. With a bound, the interval runs from the
    /// last answer, so that a slow server is not flooded.
    int pollsInFlight = kUnbounded;

    static constexpr int kMaxSectionPause = 10'000; ///< that a user may ask for, in ms

    bool operator==(const CapturePace &other) const = default;
};

/// As fast as the server answers.
inline constexpr CapturePace kEagerPace{
    .sectionPause = 0, .sectionsInFlight = 4, .pollInterval = 20, .pollsInFlight = 1};

} // namespace KEO
