#include "zoomhistory.h"

#include <wave/view/waveview.h>

#include <QKeySequence>
#include <QScopedValueRollback>
#include <QScrollBar>

namespace WaveMonitor {

namespace {

constexpr size_t kMaximumZooms = 50;

} // namespace

ZoomHistory::ZoomHistory(WaveView *waves) : m_waves(waves), m_back(tr("Previous Zoom"))
{
    m_back.setShortcut(Qt::Key_Backspace);
    m_back.setShortcutContext(Qt::WidgetWithChildrenShortcut);
    m_back.setVisible(false);
    connect(&m_back, &QAction::triggered, this, &ZoomHistory::goBack);
    NotificationCenter::instance()->subscribe(this, {EvBeforeZoom});
}

ZoomHistory::~ZoomHistory()
{
    NotificationCenter::instance()->unsubscribe(this);
}

void ZoomHistory::goBack()
{
    if (m_before.empty())
        return;
    const Zoom zoom = m_before.back();
    m_before.pop_back();
    m_back.setVisible(!m_before.empty());
    const QScopedValueRollback goingBack(m_isGoingBack, true);
    m_waves->setZoomRate(zoom.rate);
    m_waves->horizontalScrollBar()->setValue(zoom.bar);
}

/// The view tells of each zoom that changes anything, while it still has the old one.
void ZoomHistory::handleEvents(Notification *e)
{
    if (e->sender != m_waves || m_isGoingBack || !m_waves->isVisible()) // nobody saw that one
        return;
    m_before.push_back({m_waves->zoomRate(), m_waves->horizontalScrollBar()->value()});
    if (m_before.size() > kMaximumZooms)
        m_before.pop_front();
    m_back.setVisible(true);
}

} // namespace WaveMonitor
