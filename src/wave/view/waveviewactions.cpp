#include "waveviewactions.h"

#include <QAction>
#include <QMouseEvent>
#include <QScrollBar>

#include <algorithm>
#include <cstdlib>

namespace WaveMonitor {

namespace {

constexpr int kShortestDrag = 10; // pixels

} // namespace

void WaveView::MoveWithMouseDelegate::moved(QMouseEvent *event)
{
    const QPoint position = event->position().toPoint();
    const QPoint distance = position - m_last;
    QScrollBar *horizontal = m_view->horizontalScrollBar();
    QScrollBar *vertical = m_view->verticalScrollBar();
    horizontal->setValue(horizontal->value() - distance.x());
    vertical->setValue(vertical->value() - distance.y());
    m_last = position;
    event->accept();
}

WaveView::ZoomFromRegionDelegate::~ZoomFromRegionDelegate()
{
    m_view->setMasks({}, {});
}

void WaveView::ZoomFromRegionDelegate::moved(QMouseEvent *event)
{
    const int x = event->position().toPoint().x();
    const int width = std::abs(m_pressed.x() - x);
    if (width < kShortestDrag) {
        m_region = {};
        m_view->setMasks({}, {});
        return;
    }
    const int left = std::min(m_pressed.x(), x);
    const int viewWidth = m_view->viewport()->width();
    const int height = m_view->viewport()->height();
    m_region = QRect(left, 0, width, height);
    const int right = m_region.right();
    m_view->setMasks(QRect(0, 0, left, height), QRect(right, 0, viewWidth - right, height));
}

void WaveView::ZoomFromRegionDelegate::released(QMouseEvent *)
{
    m_view->setMasks({}, {});
    if (m_region.isEmpty())
        return;
    // Queued, so that the release is over before the transform changes.
    QMetaObject::invokeMethod(m_view, "zoomForRect", Qt::QueuedConnection, Q_ARG(QRect, m_region));
}

WaveView::ContextMenuDelegate::ContextMenuDelegate(WaveView *view)
    : m_zoomIn(new QAction(tr("Zoom In"), view)),
      m_zoomOut(new QAction(tr("Zoom Out"), view)),
      m_separator(new QAction(view))
{
    m_separator->setSeparator(true);
    connect(m_zoomIn, &QAction::triggered, view, &WaveView::zoomIn);
    connect(m_zoomOut, &QAction::triggered, view, &WaveView::zoomOut);
}

} // namespace WaveMonitor
