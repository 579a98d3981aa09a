#pragma once

#include <QBitArray>
#include <QList>

namespace WaveMonitor {

/// What a row does in the samples of one column of pixels.
struct Activity
{
    bool changes = false;
    bool level = false; ///< of the first member at the first sample
};

/// The samples 0 to \a samples - 1 in \a columns columns. The members are those of one row, or of
/// several, and none is active where there are none. Goes over the samples once, 64 at a step.
[[nodiscard]] QList<Activity> activityOf(const QList<QBitArray> &members, int samples, int columns);

} // namespace WaveMonitor
