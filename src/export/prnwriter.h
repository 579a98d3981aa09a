#pragma once

#include "exportwindow.h"

class QIODevice;

namespace KEO {

/// Writes columns of \a window as a table with tabs. Sample i stands at time i * \a period, in the
/// unit that \a timeUnit names; plain signals have a slash before their title, and every row of
/// samples ends in a blank. The content is UTF-8. \a selector 0 takes all columns, 1 leaves the
/// members of buses out, any other takes none. False when the device refuses anything.
[[nodiscard]] bool writePrn(QIODevice &out, const QString &timeUnit, int period,
                            const ExportWindow &window, int selector);

/// As writePrn, with only the buses whose ordinals (0 for the first bus) \a buses lists, ascending.
[[nodiscard]] bool writePrnBuses(QIODevice &out, const QString &timeUnit, int period,
                                 const ExportWindow &window, const QList<int> &buses);

} // namespace KEO
