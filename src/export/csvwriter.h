#pragma once

#include "exportwindow.h"

class QIODevice;

namespace KEO {

/// Writes all columns of \a window as comma-separated text, buses with their members behind them.
/// After the list of buses, if there are any, and a row of titles comes a row at time 0 that shows
/// every column as X: nothing is known before the first sample. Sample i stands at time
/// (i + 1) * \a period, in the unit that \a timeUnit names. Every row ends in a comma. The content
/// is UTF-8. False when the device refuses anything.
[[nodiscard]] bool writeCsv(QIODevice &out, const QString &timeUnit, int period,
                            const ExportWindow &window);

} // namespace KEO
