#pragma once

#include "exportwindow.h"

#include <QDateTime>

class QIODevice;

namespace KEO {

/// What stands above the values.
struct PlainVcdHead
{
    QString moduleName; ///< the outermost scope
    qint64 period = 1;  ///< of a sample, in picoseconds, at least 1
    int triggerSample = 0;
    QDateTime written;
};

/// The unit that the time stamps of a plain dump count in: the greatest of 1, 10 and 100 times a
/// second, a millisecond and so on that the period is a multiple of.
struct VcdTimescale
{
    QString text;     ///< such as "10 ns"
    qint64 steps = 1; ///< of a period
};
[[nodiscard]] VcdTimescale timescaleOf(qint64 period);

/// What a reader of a plain dump finds in it.
struct PlainVcdExtent
{
    qint64 variables = 0; ///< the trigger among them
    qint64 endTime = 0;
};

/// Writes the rows of \a window as a Value Change Dump that programs read which know the standard
/// and nothing else: a variable for each row, buses as vectors, and nothing but values behind the
/// head. The samples of row i stand from i to i + 1 periods, with a stamp only where something
/// changes, and one behind the last sample. A wire "trigger" is 1 during the trigger sample. Titles
/// become names as vcdName tells. A row that ends before the longest one is x from there on; a bus
/// without members has no variable. The content is UTF-8. False when the device refuses anything.
/// \a extent, if given, is filled in.
[[nodiscard]] bool writePlainVcd(QIODevice &out, const PlainVcdHead &head,
                                 const ExportWindow &window, PlainVcdExtent *extent = nullptr);

} // namespace KEO
