#pragma once

#include <QElapsedTimer>

namespace WaveMonitor {

/// Tells which events of a wheel stand for one more notch. A wheel of high resolution, or a touch
/// pad, sends many for each; the first one counts, so that the answer is at once.
class WheelNotches final
{
public:
    /// \a delta in eighths of a degree. An event is one notch at most, whatever it turned by.
    [[nodiscard]] bool take(int delta);
    /// The next event begins a notch.
    void reset() { m_left = 0; }

private:
    int m_left = 0; ///< of the notch that was told already
    bool m_isUp = false;
    QElapsedTimer m_last;
};

} // namespace WaveMonitor
