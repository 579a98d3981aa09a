#pragma once

namespace WaveMonitor {

// Pixels. Rows are lower than those of the window, since there are many and they are looked
// through, not read.
inline constexpr int kAidLeastRowHeight = 20;
inline constexpr int kAidBarHeight = 20; ///< of the bar, and of the heading beside the ruler

/// Height of a row in pixels: more where the program's font needs it.
[[nodiscard]] int aidRowHeight();

} // namespace WaveMonitor
