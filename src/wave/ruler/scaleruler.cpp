#include "scaleruler.h"

#include <wave/common/viewercolors.h>
#include <wave/common/viewergeometry.h>

#include <QFontMetrics>
#include <QLineF>
#include <QList>
#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QPen>
#include <QStyleOptionGraphicsItem>
#include <QTextOption>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <limits>

namespace WaveMonitor {

namespace {

constexpr qreal kScaleHeight = 20.0;
constexpr qreal kMajorTop = 2.0;
constexpr qreal kMinorTop = 15.0;

/// Ticks of one kind.
struct HitLook
{
    qreal top;
    qreal bottom;
    QColor color;
    QColor currentColor;
};
constexpr HitLook kFoundLook{14.0, kScaleHeight, QColor(0xFF, 0xB0, 0x00), QColor(0, 0xFF, 0xFF)};
constexpr HitLook kAidLook{0.0, 6.0, kAidHitColor, kAidHitColor};

constexpr qreal kLabelGap = 3.0; // pixels between a tick and its number

/// A pen as wide as that many pixels of the widget, whatever the zoom and the screen.
QPen pixelPen(const QPainter &painter, const QColor &color, int width)
{
    const qreal ratio = painter.paintEngine()->paintDevice()->devicePixelRatioF();
    QPen pen(color, width * std::max(1, int(ratio)));
    pen.setCosmetic(true);
    return pen;
}

/// Draws the numbers of every \a spacing-th tick among samples \a first to \a last (not included)
/// in pixels of their own, so that the zoom does not stretch them. Leaves the painter's transform
/// changed.
void drawLabels(QPainter *painter, int first, int last, int spacing)
{
    const QTransform scaled = painter->transform();
    painter->setTransform(QTransform(1.0, scaled.m12(), scaled.m13(), scaled.m21(), 1.0,
                                     scaled.m23(), scaled.m31(), scaled.m32(), scaled.m33()));
    const QFontMetrics metrics = painter->fontMetrics();
    for (qint64 i = first / spacing * spacing; i < last; i += spacing) {
        const QString text = QString::number(i);
        const QPointF place(qreal(i) * CLOCK_PITCH * scaled.m11() + kLabelGap, 0.0);
        painter->drawText(QRectF(place, metrics.size(Qt::TextSingleLine, text)), text,
                          QTextOption());
    }
}

/// Cost follows the pixels: what lies on the pixel of a hit is passed over.
void drawHits(QPainter *painter, const QRectF &dirty, const SampleHits &hits,
              std::optional<int> current, const HitLook &look)
{
    const qreal zoom = painter->transform().m11();
    const qreal pixel = 1.0 / (zoom * CLOCK_PITCH); // in samples
    const auto from = qsizetype(dirty.left() / CLOCK_PITCH - pixel);
    const qreal to = dirty.right() / CLOCK_PITCH + pixel;
    QList<QLineF> lines;
    for (auto hit = hits.next(from - 1); hit && qreal(*hit) <= to;
         hit = hits.next(std::max(*hit, qsizetype(std::ceil(qreal(*hit) + pixel)) - 1)))
        lines.append({*hit * CLOCK_PITCH, look.top, *hit * CLOCK_PITCH, look.bottom});
    painter->setPen(pixelPen(*painter, look.color, 2));
    painter->drawLines(lines);
    if (!current)
        return;
    painter->setPen(pixelPen(*painter, look.currentColor, 2));
    const qreal x = *current * CLOCK_PITCH;
    painter->drawLine(QLineF(x, 0.0, x, kScaleHeight));
}

} // namespace

TickSpacing tickSpacing(qreal zoom)
{
    if (zoom >= 1.0)
        return {};
    const int halvings = int(std::ceil(-std::log2(zoom)));
    const int decade = halvings / 3;
    const int step = halvings % 3;
    const int major = int(std::pow(10, decade)) * ((1 << (step + 1)) - step - 1);
    return {major, std::max(1, major / 10)};
}

int labelSpacing(int major, qreal distance, qreal width)
{
    for (qint64 decade = 1; major * decade <= std::numeric_limits<int>::max() / 10; decade *= 10) {
        for (const qint64 factor : {decade, 2 * decade, 5 * decade}) {
            if (qreal(factor) * distance >= width)
                return int(major * factor);
        }
    }
    return std::numeric_limits<int>::max();
}

ScaleRuler::ScaleRuler()
{
    setZValue(1.0);
    setFlag(ItemUsesExtendedStyleOption);
}

void ScaleRuler::setClocks(int clocks)
{
    prepareGeometryChange();
    m_clocks = clocks;
    update();
}

void ScaleRuler::setHits(const SampleHits &hits, std::optional<int> current)
{
    m_found = {hits, current};
    update();
}

void ScaleRuler::setAidHits(const SampleHits &hits, std::optional<int> current)
{
    m_aid = {hits, current};
    update();
}

QRectF ScaleRuler::boundingRect() const
{
    return {0.0, 0.0, m_clocks * CLOCK_PITCH, kScaleHeight};
}

void ScaleRuler::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *)
{
    const QRectF dirty = option->exposedRect;
    const auto [major, minor] = tickSpacing(painter->transform().m11());
    // The greatest number counts, so that the ticks with numbers stay the same as the scale moves.
    const int width = painter->fontMetrics().horizontalAdvance(QString::number(m_clocks - 1));
    const int spacing = labelSpacing(major, major * CLOCK_PITCH * painter->transform().m11(),
                                     width + 2 * kLabelGap);
    const int first = std::max(0, int(dirty.x() / CLOCK_PITCH) - spacing);
    const int last = std::min(m_clocks, int((dirty.x() + dirty.width()) / CLOCK_PITCH) + minor);
    if (last <= first)
        return;

    const qreal left = first * CLOCK_PITCH;
    const qreal right = last * CLOCK_PITCH;
    QList<QLineF> lines{{left, kScaleHeight, right, kScaleHeight}};
    for (int i = first; i < last; ++i) {
        const bool isMajor = i % major == 0;
        if (isMajor || i % minor == 1) {
            const qreal x = i * CLOCK_PITCH;
            // Where a number is wider than the way to the next tick, that one stays below it.
            lines.append({x, i % spacing == 0 ? kMajorTop : kMinorTop, x, kScaleHeight});
        }
    }

    painter->fillRect(QRectF(left, 0.0, right - left, kScaleHeight), QColor(0x555555));
    painter->setPen(pixelPen(*painter, Qt::white, 1));
    painter->drawLines(lines);
    painter->save();
    drawLabels(painter, first, last, spacing);
    painter->restore();
    drawHits(painter, dirty, m_aid.hits, m_aid.current, kAidLook);
    drawHits(painter, dirty, m_found.hits, m_found.current, kFoundLook);
}

} // namespace WaveMonitor
