#include "waveview.h"

#include "waveviewactions.h"

#include <wave/common/popupmenu.h>
#include <wave/common/timesliderdata.h>
#include <wave/common/viewergeometry.h>

#include <QAction>
#include <QContextMenuEvent>
#include <QCursor>
#include <QGraphicsItem>
#include <QGraphicsScene>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPen>
#include <QPointer>
#include <QResizeEvent>
#include <QScrollBar>
#include <QVariant>
#include <QWheelEvent>
#include <QtDebug>

#include <cmath>

namespace WaveMonitor {

namespace {

// Lines stand this far (scene units, at every zoom) before the start of their sample.
constexpr qreal kLineShift = 0.02;

constexpr QColor kMaskColor(0, 255, 255);

qreal lineX(int sample)
{
    return sample * CLOCK_PITCH - kLineShift;
}

void drawMask(QPainter *painter, const QRect &mask, const QLine &edge)
{
    if (mask.isEmpty())
        return;
    painter->setPen(kMaskColor);
    painter->drawLine(edge);
    painter->fillRect(mask, QColor(0, 255, 255, 30));
}

} // namespace

/// Keeps the toolkit from bringing back the place that it holds for the last one. It knows a middle
/// only after the first scrolling, and to the pixel only: with each zooming, and whenever the view
/// shows again, waves and rows would creep.
class WaveView::AnchorOff final
{
public:
    explicit AnchorOff(WaveView &view) : m_view(view), m_anchor(view.transformationAnchor())
    {
        m_view.setTransformationAnchor(NoAnchor);
    }
    AnchorOff(const AnchorOff &) = delete;
    AnchorOff &operator=(const AnchorOff &) = delete;
    ~AnchorOff() { m_view.setTransformationAnchor(m_anchor); }

private:
    WaveView &m_view;
    const ViewportAnchor m_anchor;
};

WaveView::WaveView(QWidget *parent)
    : QGraphicsView(parent), m_contextMenu(std::make_unique<ContextMenuDelegate>(this))
{
    setFrameShape(NoFrame);
    setAccessibleName(tr("Waves"));
    setAccessibleDescription(tr("Samples of the rows beside"));
    setTransformationAnchor(AnchorUnderMouse);
    // The overlays are drawn over the whole viewport after the scene.
    setViewportUpdateMode(FullViewportUpdate);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    auto *scene = new QGraphicsScene(this);
    scene->setBackgroundBrush(Qt::black);
    setScene(scene);
    connect(horizontalScrollBar(), &QScrollBar::valueChanged, this,
            &WaveView::hScrollBarValueChanged);

    // 4 and 21 are reserved.
    NotificationCenter::instance()->subscribe(
        this, {EvBeforeZoom, EvAfterZoom, 4, EvFormatChanged, EvBeforeMarkerCreate,
               EvAfterMarkerCreate, EvBeforeMarkerChange, EvAfterMarkerChange, EvBeforeMarkerRemove,
               EvAfterMarkerRemove, EvCollapsed, EvExpanded, EvRemoveAllItems, EvAddAllItems,
               EvRepaintItems, EvStructureChanged, 21, EvColorChanged});
}

WaveView::~WaveView()
{
    m_actionDelegate.reset();
    removeAllItems(); // they are the source's, and a scene frees what it holds
    NotificationCenter::instance()->unsubscribe(this);
}

void WaveView::setDataSource(DataSourceProtocol *source)
{
    m_dataSource = source;
}

int WaveView::horizontalScrollBarValue() const
{
    return horizontalScrollBar()->value();
}

int WaveView::left() const
{
    return -qRound(viewportTransform().dx());
}

void WaveView::setZoomRate(qreal rate)
{
    zoomAbout(pointerAnchor(), rate);
}

/// Keys and menus zoom about the pointer while it is over the waves.
WaveView::Anchor WaveView::pointerAnchor() const
{
    if (!underMouse())
        return {};
    return viewport()->mapFromGlobal(QCursor::pos()).x();
}

void WaveView::zoomAbout(Anchor anchor, qreal rate)
{
    if (rate == m_zoomRate)
        return;
    raiseNow(this, EvBeforeZoom);
    const bool isCentred = !anchor && keepsMiddle();
    const qreal middleBefore = middle();
    const qreal half = viewport()->width() / 2.0;
    const qreal offset = anchor ? *anchor - half : 0.0; // of what stays, from the middle
    const qreal middleAfter = middleBefore + offset / m_zoomRate - offset / rate;
    m_zoomRate = rate;
    const int topRow = verticalScrollBar()->value();
    {
        const AnchorOff staysHere(*this);
        setTransform(QTransform::fromScale(rate, 1.0));
    }
    verticalScrollBar()->setValue(topRow);
    placeMiddle(middleAfter);
    m_isCentred = isCentred;
    raiseLater(this, EvAfterZoom);
    raiseLater(this, EvViewScrolled);
}

/// Scene x in the middle of the view.
qreal WaveView::middle() const
{
    if (horizontalScrollBar()->value() == m_middleBar)
        return m_middle;
    return (left() + viewport()->width() / 2.0) / m_zoomRate;
}

void WaveView::placeMiddle(qreal x)
{
    horizontalScrollBar()->setValue(qRound(x * m_zoomRate - viewport()->width() / 2.0));
    m_middle = x;
    m_middleBar = horizontalScrollBar()->value();
}

bool WaveView::keepsMiddle() const
{
    return m_isCentred && horizontalScrollBar()->value() == m_middleBar;
}

void WaveView::centreOn(int sample)
{
    placeMiddle(sample * CLOCK_PITCH);
    m_isCentred = true;
}

int WaveView::middleSample() const
{
    return int(std::floor(mapToScene(viewport()->width() / 2, 0).x() / CLOCK_PITCH));
}

bool WaveView::isInView(int sample) const
{
    const int x = mapFromScene(lineX(sample), 0).x();
    return x >= 0 && x < viewport()->width();
}

void WaveView::showEvent(QShowEvent *event)
{
    const AnchorOff staysHere(*this);
    QGraphicsView::showEvent(event);
}

void WaveView::resizeEvent(QResizeEvent *event)
{
    const bool isCentred = keepsMiddle();
    m_middleBar = isCentred ? m_middleBar : -1; // the middle is another one
    QGraphicsView::resizeEvent(event);
    if (isCentred)
        placeMiddle(m_middle);
}

void WaveView::zoomIn()
{
    setZoomRate(boundedZoom(m_zoomRate * 2.0));
}

void WaveView::zoomOut()
{
    setZoomRate(boundedZoom(m_zoomRate * 0.5));
}

void WaveView::zoomForRect(QRect rect)
{
    const QRectF region = mapToScene(rect).boundingRect();
    setZoomRate(boundedZoom(qreal(viewport()->width()) / rect.width() * m_zoomRate));
    ensureVisible(region, 0, 0);
}

void WaveView::hScrollBarValueChanged(int)
{
    raiseLater(this, EvViewScrolled);
}

void WaveView::mousePressEvent(QMouseEvent *event)
{
    const QPoint position = event->position().toPoint();
    if (event->button() == Qt::MiddleButton) {
        m_actionDelegate = std::make_unique<MoveWithMouseDelegate>(this, position);
        setCursor(Qt::ClosedHandCursor);
        event->accept();
        return;
    }
    if (event->button() == Qt::LeftButton) {
        m_dataSource->itemPressed(itemAt(position));
        m_actionDelegate = std::make_unique<ZoomFromRegionDelegate>(this, position);
    }
    QGraphicsView::mousePressEvent(event);
}

void WaveView::mouseMoveEvent(QMouseEvent *event)
{
    // Without a button the release was lost, to a menu for one.
    if (m_actionDelegate && event->buttons() != Qt::NoButton)
        m_actionDelegate->moved(event);
    QGraphicsView::mouseMoveEvent(event);
}

void WaveView::mouseReleaseEvent(QMouseEvent *event)
{
    if (m_actionDelegate) {
        m_actionDelegate->released(event);
        m_actionDelegate.reset();
    }
    if (event->button() == Qt::MiddleButton) {
        setCursor(Qt::ArrowCursor);
        event->accept();
        return;
    }
    QGraphicsView::mouseReleaseEvent(event);
}

void WaveView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Escape || !m_actionDelegate) {
        QGraphicsView::keyPressEvent(event);
        return;
    }
    m_actionDelegate.reset(); // the drag that goes on means nothing any more
    setCursor(Qt::ArrowCursor);
}

void WaveView::wheelEvent(QWheelEvent *event)
{
    if (event->modifiers() != Qt::ControlModifier) {
        m_notches.reset();
        QGraphicsView::wheelEvent(event);
        return;
    }
    event->accept();
    const QPoint turned = event->angleDelta();
    // A touch pad marks where a gesture begins and ends by events that turn nothing.
    if (turned.isNull() && event->phase() != Qt::NoScrollPhase)
        return;
    const int delta = turned.y() != 0 ? turned.y() : turned.x();
    if (!m_notches.take(delta))
        return;
    const qreal factor = delta < 1 ? 0.5 : 2.0;
    zoomAbout(event->position().toPoint().x(), boundedZoom(m_zoomRate * factor));
}

bool WaveView::eventFilter(QObject *watched, QEvent *event)
{
    // The toolkit makes a scroll area a filter of its own bars as well.
    const bool ownBar = watched == horizontalScrollBar() || watched == verticalScrollBar();
    if (event->type() != QEvent::Wheel || ownBar)
        return QGraphicsView::eventFilter(watched, event);
    wheelEvent(static_cast<QWheelEvent *>(event));
    event->accept();
    return true;
}

void WaveView::contextMenuEvent(QContextMenuEvent *event)
{
    // What others have added to the view, as far as it applies now.
    QList<QAction *> entries = m_contextMenu->actions() + actions();
    entries.removeIf([](const QAction *action) { return !action->isVisible(); });
    const QPointer<WaveView> alive = this;
    if (event->reason() == QContextMenuEvent::Mouse)
        m_menuPlace = event->pos();
    runMenu(this, entries, event->globalPos());
    if (alive)
        m_menuPlace.reset();
}

void WaveView::paintEvent(QPaintEvent *event)
{
    QGraphicsView::paintEvent(event);
    drawTrigger();
    drawMarkers();
    drawOverlay();
    drawMasks();
}

void WaveView::drawOverlay() const
{
    if (!m_overlay)
        return;
    const QPointF origin = viewportTransform().map(QPointF());
    QPainter painter(viewport());
    m_overlay->paint(painter, {m_zoomRate * CLOCK_PITCH, origin.x(), origin.y(), viewport()->size(),
                               m_dataSource->shownRows()});
}

void WaveView::setOverlay(const WaveOverlay *overlay)
{
    m_overlay = overlay;
    viewport()->update();
}

void WaveView::setRoom(int before, int after)
{
    m_roomBefore = before;
    m_roomAfter = after;
    const bool isCentred = keepsMiddle();
    setSceneExtent(scene()->sceneRect().height());
    if (isCentred)
        placeMiddle(m_middle);
}

void WaveView::drawTrigger() const
{
    if (!m_dataSource)
        return;
    const int x = mapFromScene(lineX(m_dataSource->triggerPosition()), 0).x();
    if (x > viewport()->width())
        return;
    QPainter painter(viewport());
    painter.setPen(Qt::yellow);
    painter.drawLine(x, 0, x, viewport()->height());
}

void WaveView::drawMarkers() const
{
    QPainter painter(viewport());
    painter.setPen(QColor(0xFF0000));
    for (const int sample : m_timeMarkers) {
        const int x = mapFromScene(lineX(sample), 0).x();
        painter.drawLine(x, 0, x, viewport()->height());
    }
}

void WaveView::drawMasks() const
{
    QPainter painter(viewport());
    drawMask(&painter, m_leftMask, QLine(m_leftMask.topRight(), m_leftMask.bottomRight()));
    drawMask(&painter, m_rightMask, QLine(m_rightMask.topLeft(), m_rightMask.bottomLeft()));
}

void WaveView::setMasks(const QRect &left, const QRect &right)
{
    m_leftMask = left;
    m_rightMask = right;
    viewport()->update();
}

void WaveView::addItems()
{
    const QList<QGraphicsItem *> items = m_dataSource->waveItems();
    for (QGraphicsItem *item : items) {
        if (item->scene() != scene())
            scene()->addItem(item);
    }
    qDebug().nospace() << "WaveView gets " << items.size() << " items";
    fitScene(items);
}

void WaveView::relayoutItems()
{
    fitScene(m_dataSource->waveItems());
}

void WaveView::removeAllItems()
{
    const QList<QGraphicsItem *> items = scene()->items();
    for (QGraphicsItem *item : items)
        scene()->removeItem(item);
}

void WaveView::fitScene(const QList<QGraphicsItem *> &items)
{
    qreal height = 0.0;
    for (const QGraphicsItem *item : items) {
        if (item->isVisible())
            height += ROW_HEIGHT;
    }
    const bool isCentred = keepsMiddle();
    // As wide as the first rows; a longer capture later does not widen it.
    if (m_dataWidth <= 0.0)
        m_dataWidth = scene()->sceneRect().width();
    setSceneExtent(height);
    if (isCentred)
        placeMiddle(m_middle);
}

void WaveView::setSceneExtent(qreal height)
{
    const qreal before = m_dataWidth > 0.0 ? m_roomBefore * CLOCK_PITCH : 0.0;
    const qreal after = m_dataWidth > 0.0 ? m_roomAfter * CLOCK_PITCH : 0.0;
    scene()->setSceneRect(-before, 0.0, before + m_dataWidth + after, height);
}

// Rows come and go in bursts, one event each. The first event of a burst finds the rows as the last
// one left them, so whatever stands in the queue before the call posted here has been dealt with.
void WaveView::refresh(Fresh what)
{
    if (what <= m_fresh)
        return;
    m_fresh = what;
    QMetaObject::invokeMethod(
        this, [this] { m_fresh = Fresh::Nothing; }, Qt::QueuedConnection);
    if (what == Fresh::Items) {
        removeAllItems();
        addItems();
    } else {
        relayoutItems();
    }
}

void WaveView::takeMarkers(const QObject &ruler)
{
    m_timeMarkers.clear();
    const auto markers = ruler.property("timeMarkers").value<QList<TimeSliderData *>>();
    for (const TimeSliderData *marker : markers)
        m_timeMarkers.append(marker->clock());
    viewport()->update();
}

QString WaveView::handleEvents(Notification *e)
{
    if (!concerns(*e, domain()))
        return {};
    switch (e->type) {
    case EvAfterZoom:
        setZoomRate(e->sender->property("zoomRate").toReal());
        break;
    case EvFormatChanged:
    case EvRepaintItems:
    case EvColorChanged:
        scene()->update();
        break;
    case EvAfterMarkerCreate:
    case EvAfterMarkerChange:
    case EvAfterMarkerRemove:
        takeMarkers(*e->sender);
        break;
    case EvCollapsed:
    case EvExpanded:
        refresh(Fresh::Layout);
        break;
    case EvRemoveAllItems:
        m_fresh = Fresh::Nothing;
        removeAllItems();
        break;
    case EvAddAllItems:
        addItems();
        break;
    case EvStructureChanged:
        refresh(Fresh::Items);
        break;
    default:
        break;
    }
    return {};
}

} // namespace WaveMonitor
