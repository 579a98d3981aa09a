#pragma once

#include "tracegeometry.h"

#include <QColor>

#include <optional>

class QPainter;

namespace WaveMonitor {

/// Draws the line below a row at \a separatorY and, if \a selected, the row's tint. Scene units.
void paintRowGround(QPainter &painter, const QRectF &exposed, qreal separatorY, bool selected);

/// The grid of a painter whose lines in \a color land as PixelGrid tells, if it is such a one: it
/// paints pixels opaquely, without antialiasing, and scales but neither turns nor shears.
std::optional<PixelGrid> pixelGrid(QPainter &painter, const QColor &color);

/// Puts the pixels of a trace on the device of \a painter, which gave the grid they were made for.
void paintColumns(QPainter &painter, const TraceColumns &columns, const QColor &color);

} // namespace WaveMonitor
