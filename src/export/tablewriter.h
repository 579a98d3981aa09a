#pragma once

#include "bytesink.h"
#include "exportwindow.h"

namespace KEO {

/// How a row of a table is put down: time, then a separator and a cell for each column, line end.
struct TableStyle
{
    QByteArrayView separator; ///< at most two bytes
    QByteArrayView lineEnd;
};

/// Writes one row for each sample of the first column, with the time running from \a firstTime in
/// steps of \a period. Cells past the end of their column are empty. Stops early when \a out fails.
void writeTableRows(ByteSink &out, const ExportColumns &columns, const TableStyle &style,
                    qint64 firstTime, qint64 period);

} // namespace KEO
