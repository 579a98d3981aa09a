#include "rulerview.h"

#include "scaleruler.h"

#include <wave/common/mouseaction.h>
#include <wave/common/popupmenu.h>
#include <wave/common/timeslideritem.h>
#include <wave/common/viewergeometry.h>

#include <QAction>
#include <QContextMenuEvent>
#include <QGraphicsScene>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTimer>
#include <QVariant>

#include <algorithm>
#include <cmath>

namespace WaveMonitor {

namespace {

// A press from this height (viewport pixels) down is on the scale.
constexpr int kScaleTop = 29;

// A dragged marker takes the view along.
constexpr int kEdge = 20;           // pixels
constexpr int kFastest = 120;       // pixels a step
constexpr int kScrollInterval = 30; // milliseconds

TimeSliderItem *markerOf(QGraphicsItem *item)
{
    return item ? qobject_cast<TimeSliderItem *>(item->toGraphicsObject()) : nullptr;
}

} // namespace

class RulerView::ActionDelegate : public MouseAction<RulerView>
{
    using MouseAction::MouseAction;
};

/// Drags a marker from sample to sample. While the mouse is at an edge of the view or beyond, the
/// view goes on below it.
class RulerView::MoveTimeSliderDelegate final : public ActionDelegate
{
public:
    MoveTimeSliderDelegate(RulerView *view, TimeSliderItem *marker)
        : ActionDelegate(view), m_marker(marker)
    {
        view->activateMarker(marker);
        m_timer.setInterval(kScrollInterval);
        QObject::connect(&m_timer, &QTimer::timeout, view, [this] { scroll(); });
    }

    void moved(QMouseEvent *event) override
    {
        m_place = event->position().toPoint();
        follow();
        if (edgeDistance() == 0)
            m_timer.stop();
        else if (!m_timer.isActive())
            m_timer.start();
    }

private:
    void follow()
    {
        if (m_marker)
            m_view->moveMarker(m_marker, m_view->nearestClock(m_place));
    }
    void scroll()
    {
        follow(); // the ruler has come along since
        Q_EMIT m_view->scrollAsked(std::clamp(2 * edgeDistance(), -kFastest, kFastest));
    }
    /// How far beyond the borders that scroll the mouse is; negative on the left.
    [[nodiscard]] int edgeDistance() const
    {
        const int last = m_view->viewport()->width() - kEdge;
        return std::min(m_place.x() - kEdge, 0) + std::max(m_place.x() - last, 0);
    }

    QPointer<TimeSliderItem> m_marker;
    QPoint m_place; ///< viewport pixels
    QTimer m_timer;
};

RulerView::RulerView(QWidget *parent)
    : QGraphicsView(parent),
      m_scaleRuler(new ScaleRuler),
      m_createAction(new QAction(this)),
      m_removeAction(new QAction(tr("Remove Marker"), this))
{
    setFrameShape(NoFrame);
    setAccessibleName(tr("Ruler"));
    setAccessibleDescription(tr("Sample numbers and markers"));
    setAlignment(Qt::AlignLeft | Qt::AlignBottom);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    // An arrow key would scroll the ruler away from the wave view, and so would the toolkit, a
    // pixel at a time, when it brings back the middle of what shows again.
    setFocusPolicy(Qt::NoFocus);
    setTransformationAnchor(NoAnchor);
    // The vertical bar's place stays, so that the ruler is as wide as the wave view below it.
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    horizontalScrollBar()->setVisible(false);
    verticalScrollBar()->setVisible(false);
    // Flags and numbers in a large font may not fit above the scale; the scale is what must show.
    QScrollBar *bar = verticalScrollBar();
    connect(bar, &QScrollBar::rangeChanged, bar,
            [bar](int, int maximum) { bar->setValue(maximum); });

    auto *scene = new QGraphicsScene(this);
    scene->setBackgroundBrush(Qt::gray);
    scene->addItem(m_scaleRuler);
    setScene(scene);
    connect(scene, &QGraphicsScene::sceneRectChanged, this, &RulerView::followScene);

    NotificationCenter::instance()->subscribe(this, {EvBeforeZoom, EvAfterZoom, EvViewScrolled});
}

RulerView::~RulerView()
{
    NotificationCenter::instance()->unsubscribe(this);
}

void RulerView::setClocks(int clocks)
{
    m_scaleRuler->setClocks(clocks);
}

void RulerView::setHits(const SampleHits &hits, std::optional<int> current)
{
    m_scaleRuler->setHits(hits, current);
}

void RulerView::setAidHits(const SampleHits &hits, std::optional<int> current)
{
    m_scaleRuler->setAidHits(hits, current);
}

void RulerView::setRoom(int before, int after)
{
    m_roomBefore = before;
    m_roomAfter = after;
    followScene();
}

void RulerView::followScene()
{
    if (m_roomBefore == 0 && m_roomAfter == 0)
        setSceneRect({}); // the scene's own
    else
        setSceneRect(scene()->sceneRect().adjusted(-m_roomBefore * CLOCK_PITCH, 0.0,
                                                   m_roomAfter * CLOCK_PITCH, 0.0));
}

QList<TimeSliderData *> RulerView::timeMarkers() const
{
    QList<TimeSliderData *> markers;
    markers.reserve(qsizetype(m_timeMarkers.size()));
    for (const auto &marker : m_timeMarkers)
        markers.append(marker.get());
    return markers;
}

TimeSliderData *RulerView::timeMarker() const
{
    return m_timeMarkers.empty() ? nullptr : m_timeMarkers.front().get();
}

QSize RulerView::sizeHint() const
{
    return {500, kRulerHeight};
}

int RulerView::nearestClock(const QPoint &position) const
{
    return qRound(mapToScene(position).x() / CLOCK_PITCH);
}

void RulerView::mousePressEvent(QMouseEvent *event)
{
    const QPoint position = event->position().toPoint();
    if (position.y() < kScaleTop) {
        if (TimeSliderItem *marker = markerOf(itemAt(position)))
            m_actionDelegate = std::make_unique<MoveTimeSliderDelegate>(this, marker);
    }
    QGraphicsView::mousePressEvent(event);
}

void RulerView::mouseDoubleClickEvent(QMouseEvent *event)
{
    const QPoint position = event->position().toPoint();
    if (event->button() == Qt::LeftButton && !markerOf(itemAt(position)))
        plantMarker(nearestClock(position));
    QGraphicsView::mouseDoubleClickEvent(event);
}

void RulerView::mouseMoveEvent(QMouseEvent *event)
{
    if (m_actionDelegate)
        m_actionDelegate->moved(event);
    QGraphicsView::mouseMoveEvent(event);
}

void RulerView::mouseReleaseEvent(QMouseEvent *event)
{
    if (m_actionDelegate) {
        m_actionDelegate->released(event);
        m_actionDelegate.reset();
    }
    QGraphicsView::mouseReleaseEvent(event);
}

void RulerView::contextMenuEvent(QContextMenuEvent *event)
{
    QGraphicsItem *item = itemAt(event->pos());
    if (item == m_scaleRuler)
        return;
    const int clocks = m_scaleRuler->clocks();
    const int clock = std::min(nearestClock(event->pos()), clocks - 1);
    m_createAction->setText(tr("Create Marker at Clock Period: %1").arg(clock));

    const QPointer<TimeSliderItem> marker = markerOf(item);
    QList<QAction *> actions;
    if (marker)
        actions = {m_removeAction};
    else if (clock >= 0 && clock <= clocks)
        actions = {m_createAction};

    m_actionDelegate.reset(); // the press that opened the menu may have begun a drag
    const QPointer<RulerView> alive = this;
    const QAction *chosen = runMenu(this, actions, event->globalPos());
    if (!alive || !chosen)
        return;
    if (chosen == m_createAction)
        createMarker(clock);
    else if (marker)
        removeMarker(marker);
}

void RulerView::createMarker(int clock)
{
    raiseNow(this, EvBeforeMarkerCreate);
    auto marker = std::make_unique<TimeSliderData>();
    TimeSliderItem *item = marker->item();
    activateMarker(item);
    item->setClock(clock);
    item->setPos(clock * CLOCK_PITCH, 0.0);
    scene()->addItem(item);
    m_timeMarkers.insert(m_timeMarkers.begin(), std::move(marker));
    raiseLater(this, EvAfterMarkerCreate);
}

void RulerView::removeMarker(QGraphicsItem *item)
{
    raiseNow(this, EvBeforeMarkerRemove);
    scene()->removeItem(item);
    std::erase_if(m_timeMarkers, [item](const auto &marker) { return marker->item() == item; });
    if (!m_timeMarkers.empty())
        m_timeMarkers.front()->item()->setActive(true);
    raiseLater(this, EvAfterMarkerRemove);
}

void RulerView::activateMarker(TimeSliderItem *item)
{
    if (!m_timeMarkers.empty())
        m_timeMarkers.front()->item()->setActive(false);
    item->setActive(true);
    for (const auto &marker : m_timeMarkers)
        marker->item()->setZValue(marker->item() == item ? 1.0 : 0.0);

    const auto entry = std::find_if(m_timeMarkers.begin(), m_timeMarkers.end(),
                                    [item](const auto &marker) { return marker->item() == item; });
    if (entry == m_timeMarkers.end())
        return; // a new marker, not in the list yet
    raiseNow(this, EvBeforeMarkerChange);
    std::rotate(m_timeMarkers.begin(), entry, entry + 1);
    raiseLater(this, EvAfterMarkerChange);
}

void RulerView::plantMarker(int clock)
{
    const int clocks = m_scaleRuler->clocks();
    if (clocks < 1)
        return;
    const int bounded = std::clamp(clock, 0, clocks - 1);
    const bool stands = std::ranges::any_of(
        m_timeMarkers, [bounded](const auto &marker) { return marker->clock() == bounded; });
    if (stands)
        activateMarkerAt(bounded);
    else
        createMarker(bounded);
}

void RulerView::removeActiveMarker()
{
    if (TimeSliderData *marker = timeMarker())
        removeMarker(marker->item());
}

/// \a clock is brought within the scale.
void RulerView::moveMarker(TimeSliderItem *item, int clock)
{
    const int clocks = m_scaleRuler->clocks();
    if (clocks < 1)
        return;
    const int bounded = std::clamp(clock, 0, clocks - 1);
    const QPointF target(bounded * CLOCK_PITCH, item->y());
    const QPointF distance = target - item->pos();
    if (std::abs(distance.x()) <= 1e-12 && std::abs(distance.y()) <= 1e-12)
        return;
    raiseNow(this, EvBeforeMarkerChange);
    item->setPos(target);
    item->setClock(bounded);
    raiseLater(this, EvAfterMarkerChange);
}

void RulerView::moveActiveMarker(int clock)
{
    if (TimeSliderData *marker = timeMarker())
        moveMarker(marker->item(), clock);
}

void RulerView::activateMarkerAt(int clock)
{
    const auto found = std::find_if(m_timeMarkers.begin(), m_timeMarkers.end(),
                                    [clock](const auto &each) { return each->clock() == clock; });
    if (found != m_timeMarkers.end())
        activateMarker((*found)->item());
}

void RulerView::applyZoomRate(qreal rate)
{
    if (rate == m_zoomRate)
        return;
    m_zoomRate = rate;
    setTransform(QTransform::fromScale(rate, 1.0));
}

void RulerView::handleEvents(Notification *e)
{
    if (!concerns(*e, domain()))
        return;
    switch (e->type) {
    case EvAfterZoom:
        applyZoomRate(e->sender->property("zoomRate").toReal());
        break;
    case EvViewScrolled:
        horizontalScrollBar()->setValue(e->sender->property("horizontalScrollBarValue").toInt());
        break;
    default:
        break;
    }
}

} // namespace WaveMonitor
