#include "treeproxystyle.h"

#include <QApplication>
#include <QPainter>
#include <QPolygonF>
#include <QStyleOption>

namespace WaveMonitor {

TreeProxyStyle::TreeProxyStyle() : QProxyStyle(QApplication::style()->name())
{
    m_marker.addPolygon(QPolygonF({{0, 0}, {12, 0}, {6, 6}}));
    m_marker.closeSubpath();
}

void TreeProxyStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option,
                                   QPainter *painter, const QWidget *widget) const
{
    if (m_enabled && m_mode != Mode::NoLine && !option->rect.isEmpty())
        drawDropLine(*option, painter, widget);
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void TreeProxyStyle::drawDropLine(const QStyleOption &option, QPainter *painter,
                                  const QWidget *widget) const
{
    const bool under = m_mode == Mode::UnderRow;
    const int y = under ? m_rect.bottom() : m_rect.top() - 1;
    QStyleOption line(option);
    line.rect = QRect(QPoint(m_rect.left(), y), QPoint(m_rect.right(), y));
    QProxyStyle::drawPrimitive(PE_IndicatorItemViewItemDrop, &line, painter, widget);

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setBrush(Qt::black);
    painter->drawPath(
        m_marker.translated(m_rect.left(), under ? m_rect.bottom() + 1 : m_rect.top()));
    painter->restore();
}

} // namespace WaveMonitor
