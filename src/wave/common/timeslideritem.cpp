#include "timeslideritem.h"

#include <QCursor>
#include <QFont>
#include <QFontMetrics>
#include <QPainter>
#include <QPen>
#include <QPolygonF>
#include <QTextOption>

#include <algorithm>

namespace WaveMonitor {

namespace {

constexpr int kFlagHeight = 15; // pixels

QFont numberFont()
{
    return QFont(QStringLiteral("Courier New"), 9);
}

QRectF boundsFor(int clock)
{
    const QFontMetrics metrics(numberFont());
    const int width = std::max(10, metrics.horizontalAdvance(QString::number(clock)));
    const int height = metrics.height() + kFlagHeight;
    return {0.0, qreal(-height), qreal(width), qreal(height)};
}

} // namespace

TimeSliderItem::TimeSliderItem() : m_bounds(boundsFor(0))
{
    m_path.addPolygon(QPolygonF{QPointF(0, 0), QPointF(8, -5), QPointF(8, -15), QPointF(0, -15)});
    m_path.closeSubpath();
    setFlags(ItemIsSelectable | ItemIgnoresTransformations);
    setCursor(Qt::SizeHorCursor);
}

void TimeSliderItem::setClock(int clock)
{
    if (m_clock == clock)
        return;
    prepareGeometryChange(); // the number may get wider
    m_clock = clock;
    m_bounds = boundsFor(clock);
    update();
}

void TimeSliderItem::setActive(bool active)
{
    m_active = active;
    update();
}

void TimeSliderItem::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    painter->setPen(QPen(Qt::white, 0));
    painter->setBrush(m_active ? Qt::red : Qt::darkGray);
    painter->drawPath(m_path);

    const QFont font = numberFont();
    const QString text = QString::number(m_clock);
    QRectF place = QFontMetrics(font).boundingRect(text);
    place.moveTop(-kFlagHeight - place.height());
    painter->setFont(font);
    painter->drawText(place, text, QTextOption(Qt::AlignHCenter | Qt::AlignVCenter));
}

} // namespace WaveMonitor
