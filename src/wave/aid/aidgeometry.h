#pragma once

namespace WaveMonitor {

// Pixels. Lower than a row of the window, since there are many and they are looked through, not
// read.
inline constexpr int kAidRowHeight = 20;
inline constexpr int kAidBarHeight = 20; ///< of the bar, and of the heading beside the ruler

} // namespace WaveMonitor
