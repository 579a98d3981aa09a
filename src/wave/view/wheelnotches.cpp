#include "wheelnotches.h"

#include <algorithm>
#include <cstdlib>

namespace WaveMonitor {

namespace {

constexpr int kNotch = 120;
constexpr int kPause = 500; // milliseconds between two turns of the wheel

} // namespace

bool WheelNotches::take(int delta)
{
    const bool isUp = delta > 0;
    const bool goesOn = m_last.isValid() && m_last.elapsed() < kPause && isUp == m_isUp;
    m_last.start();
    m_isUp = isUp;
    const int turned = delta == 0 ? kNotch : std::abs(delta);
    const bool begins = !goesOn || m_left == 0;
    m_left = std::max(0, (begins ? kNotch : m_left) - turned);
    return begins;
}

} // namespace WaveMonitor
