#pragma once

#include <QtGlobal>

namespace WaveMonitor {

// Every geometry of the viewer derives from these. Sample i covers scene x from i * CLOCK_PITCH to
// (i + 1) * CLOCK_PITCH, row r scene y from r * ROW_HEIGHT to (r + 1) * ROW_HEIGHT. Zoom scales x
// only, so a row has the same height in pixels at every zoom and stays beside its tree row.
inline constexpr qreal CLOCK_PITCH = 50.0; ///< scene units per sample at zoom 1
inline constexpr qreal ROW_HEIGHT = 30.0;  ///< scene units, and pixels in the tree

// Heights in pixels that put the first tree row beside the first wave row:
// kPanelHeight + kHeaderHeight = kRulerHeight.
inline constexpr int kPanelHeight = 30;
inline constexpr int kHeaderHeight = 20;
inline constexpr int kRulerHeight = 50;

inline constexpr qreal kMinimumZoom = 1.0 / 256; ///< 0.00390625
inline constexpr qreal kMaximumZoom = 16.0;

/// \a rate within the bounds of the viewer; an infinite rate becomes the largest.
constexpr qreal boundedZoom(qreal rate)
{
    return rate < kMinimumZoom ? kMinimumZoom : rate > kMaximumZoom ? kMaximumZoom : rate;
}

} // namespace WaveMonitor
