#pragma once

#include "descriptionchange.h"
#include "signalentry.h"

namespace KEO {

/// What differs between the signals of a core, or of a port, in two descriptions: signals as
/// matchSignals tells them, and buses. A bus that came, went or moved with all of its signals is
/// one change; membership is told of signals that both lists have. A bus is the same one if it has
/// its name, or else the most of its signals. The changes have no core and no port.
[[nodiscard]] QList<DescriptionChange> signalChanges(const QList<SignalEntry> &before,
                                                     const QList<SignalEntry> &after);

} // namespace KEO
