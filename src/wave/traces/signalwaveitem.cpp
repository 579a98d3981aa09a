#include "signalwaveitem.h"

#include "tracepainting.h"

#include <base/logging.h>
#include <wave/common/viewergeometry.h>

#include <QPainter>
#include <QStyleOptionGraphicsItem>

namespace WaveMonitor {

namespace {

constexpr qreal kSeparatorY = 30;

/// A line for each sample, for painters that give no pixel grid.
void drawLines(QPainter &painter, const QBitArray &data, SampleRange range)
{
    for (qsizetype i = range.first; i < range.end; ++i) {
        const bool high = data.testBit(i);
        const qreal left = CLOCK_PITCH * qreal(i);
        const qreal y = high ? kHighY : kLowY;
        painter.drawLine(QPointF(left, y), QPointF(left + CLOCK_PITCH, y));
        if (i >= 1 && data.testBit(i - 1) != high)
            painter.drawLine(QPointF(left, kHighY), QPointF(left, kLowY));
    }
}

} // namespace

void SignalWaveItem::setData(const QBitArray &data)
{
    prepareGeometryChange();
    m_data = data;
    update();
}

QRectF SignalWaveItem::boundingRect() const
{
    return {0, 0, CLOCK_PITCH * qreal(m_data.size()), ROW_HEIGHT};
}

void SignalWaveItem::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *)
{
    const QRectF &exposed = option->exposedRect;
    qCDebug(KEO::lcWavePaint) << "dirty rectangle: " << exposed << "data size: " << m_data.size();
    painter->save();
    paintRowGround(*painter, exposed, kSeparatorY, isRowSelected());
    painter->setPen(QPen(QBrush(color()), 0, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    const SampleRange range = exposedSamples(exposed, m_data.size(), 0);
    if (const auto grid = pixelGrid(*painter, color()))
        paintColumns(*painter, signalColumns(m_data, range, *grid), color());
    else
        drawLines(*painter, m_data, range);
    painter->restore();
}

} // namespace WaveMonitor
