#include "tracepainting.h"

#include <QPaintEngine>
#include <QPainter>

#include <algorithm>

namespace WaveMonitor {

namespace {

constexpr QRgb kSeparatorColor = 0xFF555555;
constexpr QRgb kSelectionTint = 0x70888888;

/// Above this many, one picture of the row is faster than its rectangles.
constexpr size_t kMaximumRects = 1500;

/// Device pixels that anything drawn can reach: the exposed part of a widget, or all of a picture.
QRect drawnPixels(const QPaintEngine &engine)
{
    const QPaintDevice &device = *engine.paintDevice();
    const QRect all(0, 0, device.width(), device.height());
    const QRegion exposed = engine.systemClip();
    return exposed.isEmpty() ? all : all & exposed.boundingRect();
}

} // namespace

void paintRowGround(QPainter &painter, const QRectF &exposed, qreal separatorY, bool selected)
{
    painter.setPen(QPen(QColor(kSeparatorColor), 0));
    painter.drawLine(QPointF(exposed.left(), separatorY), QPointF(exposed.right(), separatorY));
    if (selected)
        painter.fillRect(exposed.adjusted(0, 1, 0, 0), QColor::fromRgba(kSelectionTint));
}

std::optional<PixelGrid> pixelGrid(QPainter &painter, const QColor &color)
{
    const QPaintEngine *engine = painter.paintEngine();
    if (engine->type() != QPaintEngine::Raster || engine->paintDevice()->depth() != 32 ||
        color.alpha() != 255 || painter.opacity() < 1 || painter.hasClipping() ||
        painter.testRenderHint(QPainter::Antialiasing) ||
        painter.compositionMode() != QPainter::CompositionMode_SourceOver)
        return std::nullopt;
    // Of what is drawn on: painter.device() is the widget even where a picture of it is taken.
    const int pen = std::max(1, int(engine->paintDevice()->devicePixelRatioF()));
    const PixelGrid grid{painter.deviceTransform(), drawnPixels(*engine), painter.transform().m11(),
                         pen};
    if (grid.clip.isEmpty() || grid.toDevice.type() > QTransform::TxScale ||
        grid.toDevice.m11() <= 0 || grid.toDevice.m22() <= 0 || grid.zoom <= 0 ||
        !grid.holdsTrace())
        return std::nullopt;
    return grid;
}

void paintColumns(QPainter &painter, const TraceColumns &columns, const QColor &color)
{
    painter.save();
    // What remains of the mapping without the painter's own part: pixel ratio and widget offset.
    painter.resetTransform();
    painter.setTransform(painter.deviceTransform().inverted());
    if (const auto rects = toRects(columns, kMaximumRects)) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        painter.drawRects(rects->data(), int(rects->size()));
    } else {
        painter.drawImage(columns.left, columns.top, toImage(columns, color.rgb()));
    }
    painter.restore();
}

} // namespace WaveMonitor
