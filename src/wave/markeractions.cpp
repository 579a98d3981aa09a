#include "markeractions.h"

#include <wave/common/timesliderdata.h>
#include <wave/common/viewergeometry.h>
#include <wave/ruler/rulerview.h>
#include <wave/view/waveview.h>

#include <QCursor>
#include <QKeySequence>
#include <QScrollBar>

#include <algorithm>
#include <cstdlib>

namespace WaveMonitor {

namespace {

constexpr qreal kMargin = 0.05; // of the view, on each side of two markers

/// Scrolls so that scene x \a middle is in the middle.
void centre(const WaveView &waves, qreal middle)
{
    waves.horizontalScrollBar()->setValue(
        qRound(middle * waves.zoomRate() - waves.viewport()->width() / 2.0));
}

} // namespace

MarkerActions::MarkerActions(RulerView *ruler, WaveView *waves)
    : m_ruler(ruler),
      m_waves(waves),
      m_plant(tr("Create Marker")),
      m_remove(tr("Remove Marker")),
      m_moveLeft(tr("Move Marker Left")),
      m_moveRight(tr("Move Marker Right")),
      m_zoom(tr("Zoom to Markers"))
{
    m_plant.setShortcut(Qt::Key_M);
    m_remove.setShortcut(Qt::SHIFT | Qt::Key_M);
    m_moveLeft.setShortcut(Qt::ALT | Qt::Key_Left);
    m_moveRight.setShortcut(Qt::ALT | Qt::Key_Right);
    m_zoom.setShortcut(Qt::Key_Z);
    m_zoom.setVisible(false);
    const QList<QAction *> all = actions();
    for (QAction *action : all)
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connect(&m_plant, &QAction::triggered, this, &MarkerActions::plant);
    connect(&m_remove, &QAction::triggered, this, &MarkerActions::remove);
    connect(&m_moveLeft, &QAction::triggered, this, [this] { move(-1); });
    connect(&m_moveRight, &QAction::triggered, this, [this] { move(1); });
    connect(&m_zoom, &QAction::triggered, this, &MarkerActions::zoom);
    NotificationCenter::instance()->subscribe(this, {EvAfterMarkerCreate, EvAfterMarkerRemove});
}

MarkerActions::~MarkerActions()
{
    NotificationCenter::instance()->unsubscribe(this);
}

QList<QAction *> MarkerActions::actions()
{
    return {&m_plant, &m_remove, &m_moveLeft, &m_moveRight, &m_zoom};
}

/// At the pointer if it is over the samples, else in the middle of the view.
void MarkerActions::plant()
{
    const QPoint pointer = m_waves->viewport()->mapFromGlobal(QCursor::pos());
    const QPoint onRuler = m_ruler->viewport()->mapFromGlobal(QCursor::pos());
    const bool isOver = m_waves->viewport()->rect().contains(pointer) ||
                        m_ruler->viewport()->rect().contains(onRuler);
    const int x = isOver ? pointer.x() : m_waves->viewport()->width() / 2;
    m_ruler->plantMarker(qRound(m_waves->mapToScene(x, 0).x() / CLOCK_PITCH));
}

void MarkerActions::remove()
{
    m_ruler->removeActiveMarker();
}

void MarkerActions::move(int samples)
{
    const TimeSliderData *marker = m_ruler->timeMarker();
    if (!marker)
        return;
    m_ruler->moveActiveMarker(marker->clock() + samples);
    const qreal place = marker->clock() * CLOCK_PITCH;
    const int x = m_waves->mapFromScene(place, 0).x();
    if (x < 0 || x >= m_waves->viewport()->width())
        centre(*m_waves, place);
}

/// Shows all from the one marker to the other, and a little more.
void MarkerActions::zoom()
{
    const QList<TimeSliderData *> markers = m_ruler->timeMarkers();
    if (markers.size() < 2)
        return;
    const int first = markers[0]->clock();
    const int second = markers[1]->clock();
    const qreal width = std::max(1, std::abs(first - second)) * CLOCK_PITCH;
    const qreal room = m_waves->viewport()->width() * (1 - 2 * kMargin);
    m_waves->setZoomRate(boundedZoom(room / width));
    centre(*m_waves, (first + second) / 2.0 * CLOCK_PITCH);
}

void MarkerActions::handleEvents(Notification *e)
{
    if (e->sender == m_ruler)
        m_zoom.setVisible(m_ruler->timeMarkers().size() >= 2);
}

} // namespace WaveMonitor
