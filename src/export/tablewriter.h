#pragma once

#include "bytesink.h"
#include "exportwindow.h"

namespace KEO {

/// How a row of a table is put down: its lead, then a separator and a cell for each column, line
/// end.
struct TableStyle
{
    enum class Lead {
        Time,
        SampleTimeTrigger ///< the third is 1 at the trigger sample, else 0
    };

    QByteArrayView separator; ///< at most two bytes
    QByteArrayView lineEnd;
    Lead lead = Lead::Time;
    int triggerSample = -1;
};

/// Which rows there are: one a sample, with the time in steps of the period.
struct TableRows
{
    qsizetype count = 0;
    qint64 firstTime = 0;
    qint64 period = 1;
};

/// Writes the rows. Cells past the end of their column are empty. Stops early when \a out fails.
void writeTableRows(ByteSink &out, const ExportColumns &columns, const TableStyle &style,
                    const TableRows &rows);

/// As many rows as the first column has samples.
[[nodiscard]] inline qsizetype firstColumnSize(const ExportColumns &columns)
{
    return columns.empty() ? 0 : columns.front()->size();
}

} // namespace KEO
