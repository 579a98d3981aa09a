#pragma once

#include <capture/triggerproposal.h>

#include <QList>

namespace WaveMonitor {
class WindowContents;
}

namespace KEO {

/// What is to be looked for of signals at a sample.
enum class Wanted {
    Value, ///< the levels that they have there
    Edge   ///< the edges of those that change there, and the levels of the others
};

/// The signals \a ids of a window as they are at \a sample, each once. Signals without that sample
/// are left out. None change at the first one.
[[nodiscard]] QList<WantedBit> wantedBits(const WaveMonitor::WindowContents &contents,
                                          const QList<int> &ids, qsizetype sample, Wanted wanted);

} // namespace KEO
