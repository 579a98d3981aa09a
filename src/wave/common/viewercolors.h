#pragma once

#include <QColor>

namespace WaveMonitor {

/// Of hits in rows that stand beside those of the window, on the ruler and in the rows.
inline constexpr QColor kAidHitColor(0x50, 0xE0, 0x70);

} // namespace WaveMonitor
