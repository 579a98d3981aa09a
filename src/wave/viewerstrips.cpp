#include "viewerstrips.h"

#include "finder.h"
#include "goto.h"

#include <wave/common/timesliderdata.h>
#include <wave/common/viewergeometry.h>
#include <wave/find/findbar.h>
#include <wave/measure/measureline.h>
#include <wave/overview/overviewstrip.h>
#include <wave/ruler/rulerview.h>
#include <wave/tree/signaltreemodel.h>
#include <wave/tree/signaltreeview.h>
#include <wave/view/waveview.h>
#include <wave_data/rowtext.h>
#include <wave_data/samplesearch.h>
#include <widgets/plaintip.h>

#include <QAction>
#include <QHelpEvent>
#include <QKeySequence>
#include <QMouseEvent>
#include <QScrollBar>
#include <QToolTip>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace WaveMonitor {

namespace {

constexpr int kLeastViewer = 200; // pixels of height; a lower one is left to rows and find bar

} // namespace

ViewerStrips::ViewerStrips(const ViewerPanes &panes, GoTo *goTo, quint64 domain,
                           ClockPeriods *periods, QWidget *viewer)
    : QWidget(viewer),
      m_panes(panes),
      m_overview(new OverviewStrip),
      m_measure(new MeasureLine),
      m_findBar(new FindBar),
      m_find(new QAction(tr("Find..."), this)),
      m_finder(new Finder(panes, goTo, m_findBar, this)),
      m_periods(periods),
      m_viewer(viewer)
{
    Localized::setDomain(domain);
    setObjectName(QStringLiteral("viewerStrips"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 2, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_overview);
    layout->addWidget(m_measure);
    layout->addWidget(m_findBar);

    m_find->setObjectName(QStringLiteral("find"));
    m_find->setShortcut(QKeySequence::Find);
    m_find->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    m_find->setShortcutVisibleInContextMenu(true);
    connect(m_find, &QAction::triggered, m_findBar, &FindBar::open);
    m_viewer->addAction(m_find);
    m_panes.waves->addAction(m_find);

    connectPanes();
    connect(goTo, &GoTo::said, m_measure, &MeasureLine::tell);
    NotificationCenter::instance()->subscribe(
        this,
        {EvFormatChanged, EvAfterMarkerCreate, EvAfterMarkerChange, EvAfterMarkerRemove,
         EvRemoveAllItems, EvAddAllItems, EvRepaintItems, EvStructureChanged, EvColorChanged});
    refreshLater();
}

ViewerStrips::~ViewerStrips()
{
    NotificationCenter::instance()->unsubscribe(this);
}

void ViewerStrips::connectPanes()
{
    connect(m_overview, &OverviewStrip::asked, m_panes.waves, &WaveView::centreOn);
    connect(m_measure, &MeasureLine::periodEntered, this,
            [this](const std::optional<ClockPeriod> &period) {
                if (m_periods)
                    m_periods->set(m_core, period);
            });
    if (m_periods)
        connect(m_periods, &ClockPeriods::changed, this, &ViewerStrips::refreshReadings);
    const QScrollBar *bar = m_panes.waves->horizontalScrollBar();
    connect(bar, &QScrollBar::valueChanged, this, &ViewerStrips::refreshView);
    connect(bar, &QScrollBar::rangeChanged, this, &ViewerStrips::refreshView);
    QWidget *viewport = m_panes.waves->viewport();
    viewport->setMouseTracking(true);
    viewport->installEventFilter(this);
    m_panes.waves->installEventFilter(m_finder);
    m_panes.tree->installEventFilter(m_finder);
    m_viewer->installEventFilter(this);
}

void ViewerStrips::setCore(int core)
{
    m_core = core;
    refreshReadings();
}

void ViewerStrips::handleEvents(Notification *e)
{
    if (!concerns(*e, domain()))
        return;
    switch (e->type) {
    case EvAfterMarkerCreate:
    case EvAfterMarkerChange:
    case EvAfterMarkerRemove:
        refreshMarkers();
        break;
    default:
        refreshLater();
        break;
    }
}

bool ViewerStrips::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_viewer && event->type() == QEvent::Resize) {
        const bool isHigh = m_viewer->height() >= kLeastViewer;
        m_overview->setVisible(isHigh);
        m_measure->setVisible(isHigh);
    }
    if (watched != m_panes.waves->viewport())
        return QWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::MouseMove:
        m_pointer = static_cast<QMouseEvent *>(event)->position().toPoint();
        refreshReadings();
        break;
    case QEvent::Leave:
        m_pointer.reset();
        refreshReadings();
        break;
    case QEvent::Resize:
        refreshView();
        break;
    case QEvent::ToolTip:
        showValue(*static_cast<QHelpEvent *>(event));
        return true;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

/// Rows change in bursts.
void ViewerStrips::refreshLater()
{
    if (m_isStale)
        return;
    m_isStale = true;
    QMetaObject::invokeMethod(this, &ViewerStrips::refreshRows, Qt::QueuedConnection);
}

void ViewerStrips::refreshRows()
{
    m_isStale = false;
    const WindowContents &contents = m_panes.model->contents();
    const QModelIndex selected = m_panes.tree->selectedRows().value(0);
    QList<QBitArray> members;
    QColor color(Qt::lightGray);
    if (selected.isValid()) {
        const LayoutNode *row = m_panes.model->node(selected);
        members = rowMembers(contents, *row);
        color = QColor::fromRgb(QRgb(row->color));
    } else { // what any of them does
        for (const auto &row : contents.layout().children)
            members.append(rowMembers(contents, *row));
    }
    m_overview->setRow(members, m_panes.model->maxDataLength(), color);
    m_overview->setTrigger(contents.triggerPosition());
    m_finder->refresh();
    refreshMarkers();
    refreshView();
}

void ViewerStrips::refreshMarkers()
{
    QList<int> samples;
    const QList<TimeSliderData *> markers = m_panes.ruler->timeMarkers();
    for (const TimeSliderData *marker : markers)
        samples.append(marker->clock());
    m_overview->setMarkers(samples);
    m_edges.reset();
    const QModelIndex selected = m_panes.tree->selectedRows().value(0);
    if (selected.isValid() && samples.size() > 1) {
        const LayoutNode *row = m_panes.model->node(selected);
        const SampleSearch edges(rowMembers(m_panes.model->contents(), *row), {});
        const auto [from, to] = std::minmax(samples[0], samples[1]);
        m_edges = edges.count(from, to);
        m_row = selected.data().toString();
    }
    refreshReadings();
}

void ViewerStrips::refreshView()
{
    const WaveView &waves = *m_panes.waves;
    const qreal pixels = CLOCK_PITCH * waves.transform().m11();
    const qreal first = waves.left() / pixels;
    m_overview->setView(first, first + waves.viewport()->width() / pixels);
    refreshReadings();
}

void ViewerStrips::refreshReadings()
{
    Readings readings;
    if (m_pointer)
        readings.pointer = sampleAt(*m_pointer);
    readings.trigger = m_panes.model->triggerPosition();
    const QList<TimeSliderData *> markers = m_panes.ruler->timeMarkers();
    if (!markers.isEmpty())
        readings.marker = markers[0]->clock();
    if (markers.size() > 1)
        readings.markerBefore = markers[1]->clock();
    readings.edges = m_edges;
    readings.row = m_row;
    if (m_periods)
        readings.period = m_periods->ofCore(m_core);
    m_measure->setReadings(readings);
}

std::optional<int> ViewerStrips::sampleAt(const QPoint &position) const
{
    const qreal sample = std::floor(m_panes.waves->mapToScene(position).x() / CLOCK_PITCH);
    if (sample < 0 || sample >= m_panes.model->maxDataLength())
        return {};
    return int(sample);
}

void ViewerStrips::showValue(const QHelpEvent &event)
{
    QWidget *viewport = m_panes.waves->viewport();
    // Rows of tree and waves stand side by side.
    const QModelIndex index = m_panes.tree->indexAt({1, event.pos().y()});
    const std::optional<int> sample = sampleAt(event.pos());
    if (!index.isValid() || !sample) {
        QToolTip::hideText();
        return;
    }
    const LayoutNode *row = m_panes.model->node(index);
    const QString value = rowValueAt(m_panes.model->contents(), *row, *sample);
    const QString name = index.siblingAtColumn(SignalTreeModel::NameColumn).data().toString();
    // The tip goes as soon as the pointer is on another sample's pixels or another row's.
    const int left = m_panes.waves->mapFromScene(*sample * CLOCK_PITCH, 0).x();
    const int right = m_panes.waves->mapFromScene((*sample + 1) * CLOCK_PITCH, 0).x();
    const QRect place(std::min(left, event.pos().x()), event.pos().y() - 2,
                      std::max(1, right - left), 5);
    QToolTip::showText(
        event.globalPos(),
        KEO::plainTip(tr("%1 = %2 at sample %3").arg(name, value, QString::number(*sample))),
        viewport, place);
}

} // namespace WaveMonitor
