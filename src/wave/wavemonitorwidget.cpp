#include "wavemonitorwidget.h"

#include "aidpane.h"
#include "goto.h"
#include "markeractions.h"
#include "viewerstrips.h"
#include "zoomhistory.h"

#include <wave/common/viewergeometry.h>
#include <wave/ruler/rulerview.h>
#include <wave/tree/signaltreemodel.h>
#include <wave/tree/signaltreeview.h>
#include <wave/view/waveview.h>
#include <wave_data/rowtext.h>

#include <QApplication>
#include <QDomDocument>
#include <QEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QScrollBar>
#include <QSplitter>
#include <QVBoxLayout>
#include <QVariant>

#include <algorithm>
#include <cmath>
#include <utility>

namespace WaveMonitor {

namespace {

constexpr int kMinimumHeight = 100; // pixels
constexpr int kTreeWidth = 300;     // pixels, without a saved state
constexpr int kLoadedNameWidth = 180;
constexpr int kLoadedValueWidth = 120;

/// A column of the viewer: one widget over another without a gap.
QWidget *newPane(QWidget *top, QWidget *bottom)
{
    auto *pane = new QWidget;
    pane->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Ignored);
    auto *layout = new QVBoxLayout(pane);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(top);
    layout->addWidget(bottom);
    return pane;
}

} // namespace

WaveMonitorWidget::WaveMonitorWidget(quint64 domain, QWidget *parent, const WindowState *saved)
    : QWidget(parent)
{
    Localized::setDomain(domain);
    setMinimumHeight(kMinimumHeight);
    // 4 and 21 are reserved.
    NotificationCenter::instance()->subscribe(
        this, {EvBeforeZoom, EvAfterZoom, 4, EvFormatChanged, EvBeforeMarkerCreate,
               EvAfterMarkerCreate, EvBeforeMarkerChange, EvAfterMarkerChange, EvRemoveAllItems,
               EvAddAllItems, 21, EvColorChanged});

    m_model = new SignalTreeModel(this);
    m_model->setDomain(domain);
    m_treeView =
        new SignalTreeView(this, saved ? saved->nameWidth + saved->valueWidth : kTreeWidth);
    m_treeView->setModel(m_model);
    m_treeView->setDomain(domain);
    addActions(m_treeView->actions()); // their keys work in all panes
    m_waveView = new WaveView(this);
    m_waveView->setDomain(domain);
    m_waveView->setDataSource(m_model);
    m_rulerView = new RulerView(this);
    m_rulerView->setDomain(domain);
    // The wheel over the ruler works on the wave view.
    m_rulerView->viewport()->installEventFilter(m_waveView);
    m_counterLabel = new QLabel;

    joinScrollBars();
    layOutPanes();
    m_markerActions = std::make_unique<MarkerActions>(m_rulerView, m_waveView);
    m_zoomHistory = std::make_unique<ZoomHistory>(m_waveView);
    addActions(m_markerActions->actions());
    addAction(m_zoomHistory->action());
    m_waveView->addActions({m_markerActions->zoomAction(), m_zoomHistory->action()});
    const ViewerPanes panes{m_model, m_treeView, m_waveView, m_rulerView};
    m_goTo = new GoTo(panes, this);
    m_aidPane = new AidPane(panes, m_goTo, domain, this);
    m_waveView->setFocus(); // when the viewer gets the focus for the first time
}

WaveMonitorWidget::~WaveMonitorWidget()
{
    NotificationCenter::instance()->unsubscribe(this);
    // They look at the panes, which would go before them.
    delete std::exchange(m_strips, nullptr);
    delete std::exchange(m_aidPane, nullptr);
    delete std::exchange(m_goTo, nullptr);
}

void WaveMonitorWidget::joinScrollBars()
{
    // The tree's own bar is hidden but tracks.
    QScrollBar *tree = m_treeView->verticalScrollBar();
    QScrollBar *waves = m_waveView->verticalScrollBar();
    connect(tree, &QScrollBar::valueChanged, waves, &QScrollBar::setValue);
    connect(waves, &QScrollBar::valueChanged, tree, &QScrollBar::setValue);
    // When rows come or go the two learn of it one after the other. Whichever comes second takes
    // the place of the first, which it may have had to refuse before. The bar that is read is the
    // receiver: a range still changes while the panes go, one after the other.
    connect(tree, &QScrollBar::rangeChanged, waves, [=] { tree->setValue(waves->value()); });
    connect(waves, &QScrollBar::rangeChanged, tree, [=] { waves->setValue(tree->value()); });
    QScrollBar *samples = m_waveView->horizontalScrollBar();
    connect(m_rulerView, &RulerView::scrollAsked, samples,
            [samples](int pixels) { samples->setValue(samples->value() + pixels); });
}

void WaveMonitorWidget::layOutPanes()
{
    auto *panel = new QWidget;
    panel->setFixedHeight(kPanelHeight);
    auto *panelLayout = new QVBoxLayout(panel);
    panelLayout->setContentsMargins(0, 0, 9, 0);
    panelLayout->addWidget(m_counterLabel, 0, Qt::AlignRight);

    m_splitter = new QSplitter(Qt::Horizontal);
    m_splitter->setChildrenCollapsible(false);
    m_splitter->addWidget(newPane(panel, m_treeView));
    m_splitter->addWidget(newPane(m_rulerView, m_waveView));
    m_splitter->setStretchFactor(1, 1);
    connect(m_splitter, &QSplitter::splitterMoved, this, &WaveMonitorWidget::treeWidthChanged);
    connect(m_waveView->horizontalScrollBar(), &QScrollBar::rangeChanged, this,
            &WaveMonitorWidget::scrollRangeChanged);

    auto *outer = new QHBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    auto *column = new QVBoxLayout;
    column->setSpacing(0);
    column->addWidget(m_splitter, 1);
    outer->addLayout(column);
}

void WaveMonitorWidget::showStrips(ClockPeriods *periods)
{
    if (m_strips)
        return;
    m_strips = new ViewerStrips({m_model, m_treeView, m_waveView, m_rulerView}, m_goTo, domain(),
                                periods, this);
    m_strips->setCore(m_core);
    layout()->itemAt(0)->layout()->addWidget(m_strips);
}

void WaveMonitorWidget::focusWaves()
{
    m_waveView->setFocus(Qt::OtherFocusReason);
}

void WaveMonitorWidget::finishEditing()
{
    const QPointer<QWidget> field = QApplication::focusWidget();
    if (!qobject_cast<QLineEdit *>(field) || !isAncestorOf(field))
        return;
    field->clearFocus(); // upon which it hands over its text
    if (field && field->isVisible())
        field->setFocus();
    else
        m_treeView->setFocus(); // a name's editor is closed
}

QAction *WaveMonitorWidget::findAction() const
{
    return m_strips ? m_strips->findAction() : nullptr;
}

void WaveMonitorWidget::followDataLength()
{
    m_rulerView->setClocks(m_model->maxDataLength());
}

void WaveMonitorWidget::setTitle(int window, int core)
{
    m_window = window;
    m_core = core;
    if (m_strips)
        m_strips->setCore(core);
    setWindowTitle(core == -1 ? tr("window %1").arg(window)
                              : tr("core %1 window %2").arg(core).arg(window));
}

void WaveMonitorWidget::addSignal(const SignalElement &signal)
{
    m_model->addSignal(signal);
    followDataLength();
}

void WaveMonitorWidget::addBus(const BusElement &bus)
{
    m_model->addBus(bus);
    followDataLength();
}

void WaveMonitorWidget::setTriggerPosition(int sample)
{
    m_model->setTriggerPosition(sample);
}

void WaveMonitorWidget::updateData(const QList<QBitArray> &samples)
{
    m_model->updateData(samples);
    followDataLength();
    if (m_strips)
        m_strips->refreshRows();
}

QMap<int, SignalElement> WaveMonitorWidget::signalMap() const
{
    return m_model->signalMap();
}

void WaveMonitorWidget::loadWindow(const QDomElement &window)
{
    m_model->readWindow(window);
    showLoaded();
}

void WaveMonitorWidget::loadWindow(WindowContents contents)
{
    m_model->setContents(std::move(contents));
    showLoaded();
}

void WaveMonitorWidget::showLoaded()
{
    followDataLength();
    m_treeView->header()->resizeSection(SignalTreeModel::NameColumn, kLoadedNameWidth);
    m_treeView->header()->resizeSection(SignalTreeModel::ValueColumn, kLoadedValueWidth);
}

QDomElement WaveMonitorWidget::saveWindow(QDomDocument &document) const
{
    return m_model->writeWindow(document);
}

const WindowContents &WaveMonitorWidget::contents() const
{
    return m_model->contents();
}

void WaveMonitorWidget::restoreState(const WindowState *state)
{
    if (!state)
        return;
    m_treeView->header()->resizeSection(SignalTreeModel::NameColumn, state->nameWidth);
    m_treeView->header()->resizeSection(SignalTreeModel::ValueColumn, state->valueWidth);
    if (!state->layout.isNull()) { // else every row would go
        m_model->setLayout(state->layout);
        m_model->setHiddenRows(state->hidden);
    }
    m_model->setDefaultFormat(state->format);
    for (const int row : state->openBuses)
        m_treeView->expand(m_model->index(row, SignalTreeModel::NameColumn));
    setZoom(state->zoomRate);
    m_keptPlace = state->scroll;
    if (isVisible())
        QMetaObject::invokeMethod(this, &WaveMonitorWidget::scrollToKept, Qt::QueuedConnection);
}

void WaveMonitorWidget::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // Behind the zoom and the rows, which are queued as well.
    QMetaObject::invokeMethod(this, &WaveMonitorWidget::scrollToKept, Qt::QueuedConnection);
}

ScrollPlace WaveMonitorWidget::scrollPlace() const
{
    return {m_waveView->horizontalScrollBar()->value() / (CLOCK_PITCH * m_waveView->zoomRate()),
            m_waveView->verticalScrollBar()->value()};
}

void WaveMonitorWidget::scrollToKept()
{
    const auto place = std::exchange(m_keptPlace, std::nullopt);
    if (!place)
        return;
    const qreal left = place->sample * CLOCK_PITCH * m_waveView->zoomRate();
    m_waveView->horizontalScrollBar()->setValue(qRound(left));
    m_waveView->verticalScrollBar()->setValue(place->top);
}

std::unique_ptr<WindowState> WaveMonitorWidget::saveState() const
{
    auto state = std::make_unique<WindowState>();
    state->core = m_core;
    state->window = m_window;
    state->nameWidth = m_treeView->header()->sectionSize(SignalTreeModel::NameColumn);
    state->valueWidth = m_treeView->valueWidth();
    // A node that hangs in its document outlives it, a loose one keeps pointing at it.
    QDomDocument document;
    state->layout = m_model->writeLayout(document);
    document.appendChild(state->layout);
    state->hidden = contents().hiddenRows();
    state->format = m_model->defaultFormat();
    state->zoomRate = m_zoomRate;
    for (int row = 0; row < m_model->rowCount(); ++row) {
        const QModelIndex index = m_model->index(row, SignalTreeModel::NameColumn);
        if (m_model->hasChildren(index) && m_treeView->isExpanded(index))
            state->openBuses.append(row);
    }
    state->scroll = m_keptPlace.value_or(scrollPlace()); // one that nobody has looked at keeps it
    return state;
}

WaveMonitorWidget::Span WaveMonitorWidget::shownSpan() const
{
    return {m_waveView->zoomRate(), m_waveView->left()};
}

void WaveMonitorWidget::showSpan(const Span &span)
{
    m_waveView->setZoomRate(boundedZoom(span.zoomRate)); // at once, unlike setZoom
    m_waveView->horizontalScrollBar()->setValue(span.left);
}

qreal WaveMonitorWidget::firstShownSample() const
{
    return m_waveView->left() / (m_waveView->zoomRate() * CLOCK_PITCH);
}

qreal WaveMonitorWidget::lastShownSample() const
{
    return firstShownSample() +
           m_waveView->viewport()->width() / (m_waveView->zoomRate() * CLOCK_PITCH);
}

void WaveMonitorWidget::showSample(int sample)
{
    m_rulerView->moveActiveMarker(sample);
    m_waveView->centreOn(sample);
}

void WaveMonitorWidget::setRoom(int before, int after)
{
    m_waveView->setRoom(before, after);
    m_rulerView->setRoom(before, after);
}

void WaveMonitorWidget::showValuesAt(int sample)
{
    m_model->showValuesAt(sample);
}

int WaveMonitorWidget::treeWidth() const
{
    return m_splitter->sizes().first();
}

void WaveMonitorWidget::setTreeWidth(int width)
{
    const QList<int> sizes = m_splitter->sizes();
    m_splitter->setSizes({width, sizes.first() + sizes.last() - width});
}

void WaveMonitorWidget::setMarkedSignals(const QSet<int> &ids)
{
    m_model->setMarkedSignals(ids);
}

void WaveMonitorWidget::setOverlay(const WaveOverlay *overlay)
{
    m_waveView->setOverlay(overlay);
}

void WaveMonitorWidget::updateOverlay()
{
    m_waveView->viewport()->update();
}

void WaveMonitorWidget::addWaveAction(QAction *action)
{
    m_waveView->addAction(action);
}

void WaveMonitorWidget::removeWaveAction(QAction *action)
{
    m_waveView->removeAction(action);
}

void WaveMonitorWidget::addNameAction(QAction *action)
{
    m_treeView->addMenuAction(action);
}

WaveMonitorWidget::Picked WaveMonitorWidget::picked() const
{
    QList<const LayoutNode *> rows;
    for (const QModelIndex &index : m_treeView->selectedRows())
        rows.append(m_model->node(index));
    Picked picked;
    picked.sample = contents().shownSample();
    if (const std::optional<QPoint> place = m_waveView->menuPlace()) {
        picked.sample = int(std::floor(m_waveView->mapToScene(*place).x() / CLOCK_PITCH));
        const LayoutNode *row = m_model->rowOf(m_waveView->itemAt(*place));
        if (row && !rows.contains(row))
            rows = {row};
    }
    picked.sample = std::clamp(picked.sample, 0, std::max(0, m_model->maxDataLength() - 1));
    for (const LayoutNode *row : std::as_const(rows)) {
        picked.rows.append(tr("%1 = %2").arg(rowName(contents(), *row),
                                             rowValueAt(contents(), *row, picked.sample)));
        if (row->type == LayoutNode::Signal)
            picked.ids.append(static_cast<const SignalLayoutNode *>(row)->id);
        for (const auto &member : row->children)
            picked.ids.append(static_cast<const SignalLayoutNode *>(member.get())->id);
    }
    return picked;
}

void WaveMonitorWidget::showAidRows(const AidRows &rows)
{
    m_aidPane->show(rows);
}

void WaveMonitorWidget::hideAidRows()
{
    m_aidPane->hide();
}

QList<QAction *> WaveMonitorWidget::hitActions() const
{
    return m_aidPane->actions();
}

void WaveMonitorWidget::setAutorunCounter(int count)
{
    m_counterLabel->setText(tr("    Autorun Counter: %1").arg(count));
}

void WaveMonitorWidget::zoomIn()
{
    setZoom(m_zoomRate * 2.0);
}

void WaveMonitorWidget::zoomOut()
{
    setZoom(m_zoomRate * 0.5);
}

void WaveMonitorWidget::zoomFit()
{
    const int samples = m_model->maxDataLength();
    const int width = m_waveView->width() - m_waveView->verticalScrollBar()->width();
    const qreal rate = samples > 0 ? width / (samples * CLOCK_PITCH) : kMaximumZoom;
    setZoom(rate);
    // The samples that don't fit are those far from the trigger. Queued behind the zoom.
    if (rate < kMinimumZoom)
        QMetaObject::invokeMethod(this, &WaveMonitorWidget::showTrigger, Qt::QueuedConnection);
}

void WaveMonitorWidget::showTrigger()
{
    m_waveView->centreOn(m_model->triggerPosition());
}

void WaveMonitorWidget::setZoom(double rate)
{
    if (std::isnan(rate))
        return;
    raiseNow(this, EvBeforeZoom);
    m_zoomRate = boundedZoom(rate);
    raiseLater(this, EvAfterZoom);
}

void WaveMonitorWidget::handleEvents(Notification *e)
{
    if (e->type == EvAfterZoom && concerns(*e, domain()))
        m_zoomRate = e->sender->property("zoomRate").toReal();
}

bool WaveMonitorWidget::eventFilter(QObject *watched, QEvent *event)
{
    return event->type() == QEvent::KeyPress || QWidget::eventFilter(watched, event);
}

void WaveMonitorWidget::wheelEvent(QWheelEvent *event)
{
    QWidget::wheelEvent(event);
}

void WaveMonitorWidget::keyPressEvent(QKeyEvent *event)
{
    QWidget::keyPressEvent(event);
}

void WaveMonitorWidget::keyReleaseEvent(QKeyEvent *event)
{
    QWidget::keyReleaseEvent(event);
}

} // namespace WaveMonitor
