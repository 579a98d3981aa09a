#include "aidpane.h"

#include "goto.h"

#include <wave/aid/aidbar.h>
#include <wave/aid/aidgeometry.h>
#include <wave/aid/aidnames.h>
#include <wave/aid/aidtracks.h>
#include <wave/common/timesliderdata.h>
#include <wave/common/viewergeometry.h>
#include <wave/ruler/rulerview.h>
#include <wave/tree/signaltreemodel.h>
#include <wave/tree/signaltreeview.h>
#include <wave/view/waveview.h>

#include <QAction>
#include <QEvent>
#include <QHeaderView>
#include <QKeySequence>
#include <QScrollBar>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>

namespace WaveMonitor {

namespace {

constexpr int kAutomaticShare = 3; // the traces get that part of the room, at most
constexpr int kLeastWaves = 4 * int(ROW_HEIGHT);
constexpr int kOthers = kRulerHeight + kAidBarHeight; // above the waves beside the traces

QVBoxLayout *columnOf(const QWidget *widget)
{
    return qobject_cast<QVBoxLayout *>(widget->parentWidget()->layout());
}

} // namespace

AidPane::AidPane(const ViewerPanes &panes, GoTo *goTo, quint64 domain, QWidget *viewer)
    : QObject(viewer),
      m_panes(panes),
      m_goTo(goTo),
      m_previous(newAction(tr("Previous Hit"), Qt::SHIFT | Qt::Key_F5, "previousHit")),
      m_next(newAction(tr("Next Hit"), Qt::Key_F5, "nextHit"))
{
    Localized::setDomain(domain);
    connect(m_previous, &QAction::triggered, this, [this] { go(Direction::Back); });
    connect(m_next, &QAction::triggered, this, [this] { go(Direction::Forth); });
    viewer->addActions(actions());
    m_panes.waves->addActions(actions());
    NotificationCenter::instance()->subscribe(this, {EvAfterZoom, EvAfterMarkerCreate,
                                                     EvAfterMarkerChange, EvAfterMarkerRemove,
                                                     EvStructureChanged});
}

AidPane::~AidPane()
{
    NotificationCenter::instance()->unsubscribe(this);
}

QAction *AidPane::newAction(const QString &text, const QKeySequence &key, const char *name)
{
    auto *action = new QAction(text, this);
    action->setObjectName(QLatin1String(name));
    action->setToolTip(QStringLiteral("%1 (%2)").arg(text, key.toString(QKeySequence::NativeText)));
    action->setShortcut(key);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    action->setShortcutVisibleInContextMenu(true);
    action->setEnabled(false);
    action->setVisible(false); // without hits it has no place in a menu
    return action;
}

void AidPane::build()
{
    m_names = new AidNames;
    m_tracks = new AidTracks;
    m_bar = new AidBar(m_previous, m_next);
    // Each before its column's last: the heading beside the ruler's foot, the names beside the
    // traces, and the header of the tree beside the bar.
    QVBoxLayout *left = columnOf(m_panes.tree);
    left->insertWidget(left->count() - 1, m_names);
    QVBoxLayout *right = columnOf(m_panes.waves);
    right->insertWidget(right->count() - 1, m_tracks);
    right->insertWidget(right->count() - 1, m_bar);

    connect(m_bar, &AidBar::dragged, this, &AidPane::dragHeight);
    connect(m_tracks->verticalScrollBar(), &QScrollBar::valueChanged, m_names, &AidNames::setTop);
    const QScrollBar *samples = m_panes.waves->horizontalScrollBar();
    connect(samples, &QScrollBar::valueChanged, this, &AidPane::followView);
    connect(samples, &QScrollBar::rangeChanged, this, &AidPane::followView);
    const QHeaderView *header = m_panes.tree->header();
    connect(header, &QHeaderView::sectionResized, this, &AidPane::followView);
    connect(m_panes.tree->horizontalScrollBar(), &QScrollBar::valueChanged, this,
            &AidPane::followView);
    m_panes.waves->parentWidget()->installEventFilter(this);
    m_panes.waves->viewport()->installEventFilter(this);
    // The wheel works on the waves, unless it moves the rows themselves.
    m_tracks->viewport()->installEventFilter(m_panes.waves);
    m_tracks->viewport()->installEventFilter(this);
}

void AidPane::show(const AidRows &rows)
{
    if (!m_names)
        build();
    const bool comesUp = !std::exchange(m_isShown, true);
    if (!comesUp && rows == m_rows) {
        followMarkers();
        return;
    }
    m_rows = rows;
    m_names->setRows(rows);
    m_tracks->setRows(rows);
    const AidRow *hits = hitRow();
    m_held =
        hits ? SampleHits(QList<quint64>(hits->holds.begin(), hits->holds.end())) : SampleHits();
    m_beginnings = hits ? SampleHits(aidBeginnings(*hits)) : SampleHits();
    m_hits = m_beginnings.count();
    m_round.clear();
    for (QAction *action : actions()) {
        action->setVisible(hits != nullptr);
        action->setEnabled(m_hits > 0);
    }
    fitHeight();
    followView();
    followMarkers();
}

void AidPane::hide()
{
    if (!std::exchange(m_isShown, false))
        return;
    m_rows = {};
    m_held = {};
    m_beginnings = {};
    m_current.reset();
    for (QAction *action : actions()) {
        action->setVisible(false);
        action->setEnabled(false);
    }
    for (QWidget *part : std::initializer_list<QWidget *>{m_names, m_tracks, m_bar})
        part->hide();
    m_panes.ruler->setAidHits({}, {});
}

const AidRow *AidPane::hitRow() const
{
    return m_rows.hitRow ? &m_rows.rows[*m_rows.hitRow] : nullptr;
}

/// The traces get what they need, as far as the waves have room.
void AidPane::fitHeight()
{
    if (!m_isShown)
        return;
    const int room = m_panes.waves->parentWidget()->height() - kOthers;
    const int most = m_wanted > 0 ? std::min(m_wanted, room - kLeastWaves) : room / kAutomaticShare;
    const int full = m_tracks->fullHeight();
    const int whole = most / aidRowHeight() * aidRowHeight();
    const int height = std::min(full, std::max(whole, aidRowHeight()));
    const bool fits = room >= kLeastWaves || !m_panes.waves->isVisible();
    m_tracks->setFixedHeight(height);
    m_names->setFixedHeight(height + kAidBarHeight);
    m_tracks->setVisible(fits && full > 0);
    m_names->setVisible(fits);
    m_bar->setVisible(fits);
}

void AidPane::dragHeight(int pixels)
{
    m_wanted = std::clamp(m_tracks->height() + pixels, aidRowHeight(), m_tracks->fullHeight());
    fitHeight();
}

bool AidPane::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize) {
        if (watched == m_panes.waves->viewport())
            followView();
        else if (watched == m_panes.waves->parentWidget())
            fitHeight();
    }
    if (watched == m_tracks->viewport() && event->type() == QEvent::Wheel && m_tracks->scrolls()) {
        const auto *wheel = static_cast<QWheelEvent *>(event);
        const int turned = wheel->angleDelta().y();
        if (wheel->modifiers() == Qt::NoModifier && turned != 0) {
            QScrollBar *bar = m_tracks->verticalScrollBar();
            bar->setValue(bar->value() -
                          turned * aidRowHeight() / QWheelEvent::DefaultDeltasPerStep);
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}

void AidPane::handleEvents(Notification *e)
{
    if (!concerns(*e, domain()))
        return;
    // Those of the sender, as the waves take them: viewers may share a domain and their markers.
    const bool isOfView = e->type == EvAfterZoom || e->type == EvStructureChanged;
    if (!isOfView)
        takeMarkers(*e->sender);
    if (!m_isShown)
        return;
    if (isOfView)
        followView();
    // The others may still have to hear of it.
    QMetaObject::invokeMethod(this, &AidPane::followMarkers, Qt::QueuedConnection);
}

/// Brings the traces to the samples that the waves show, and the names to the tree's columns.
void AidPane::followView()
{
    if (!m_isShown)
        return;
    const WaveView &waves = *m_panes.waves;
    m_tracks->setSamples(m_panes.model->maxDataLength());
    m_tracks->setSpan(
        {waves.viewportTransform().map(QPointF()).x(), waves.zoomRate() * CLOCK_PITCH});
    const QHeaderView *header = m_panes.tree->header();
    m_names->setColumns({header->sectionViewportPosition(SignalTreeModel::NameColumn),
                         header->sectionViewportPosition(SignalTreeModel::ValueColumn)});
    tell();
}

void AidPane::takeMarkers(const QObject &ruler)
{
    m_markers.clear();
    const auto markers = ruler.property("timeMarkers").value<QList<TimeSliderData *>>();
    for (const TimeSliderData *marker : markers)
        m_markers.append(marker->clock());
}

void AidPane::followMarkers()
{
    if (!m_isShown)
        return;
    m_tracks->setLines(m_panes.model->triggerPosition(), m_markers);
    m_names->setSample(m_panes.model->contents().shownSample(), m_panes.model->maxDataLength());
    if (m_current != m_goTo->place())
        m_current.reset();
    m_panes.ruler->setAidHits(m_held, m_current);
    tell();
}

void AidPane::go(Direction direction)
{
    const int from = m_goTo->place();
    const bool isForth = direction == Direction::Forth;
    std::optional<qsizetype> found =
        isForth ? m_beginnings.next(from) : m_beginnings.previous(from);
    m_round.clear();
    if (!found) {
        found =
            isForth ? m_beginnings.next(-1) : m_beginnings.previous(m_panes.model->maxDataLength());
        m_round = isForth ? tr(", from the start again") : tr(", from the end again");
    }
    if (!found)
        return;
    m_goTo->sample(*found);
    m_current = int(*found);
    followMarkers();
}

void AidPane::tell()
{
    QStringList text;
    if (hitRow())
        text.append(hitText());
    if (!m_rows.remark.isEmpty())
        text.append(m_rows.remark);
    m_bar->setText(text.join(QStringLiteral("  |  ")));
}

QString AidPane::hitText() const
{
    const AidRow &row = *hitRow();
    if (m_hits == 0)
        return tr("%1: no hit").arg(row.name);
    const int place = m_goTo->place();
    const bool isHit = place >= 0 && aidLevel(row, place) == AidLevel::Holds;
    if (!isHit && m_hits == 1)
        return tr("%1: 1 hit").arg(row.name);
    if (!isHit)
        return tr("%1: %2 hits").arg(row.name, QString::number(m_hits));
    return tr("%1: hit %2 of %3")
               .arg(row.name, QString::number(m_beginnings.countUpTo(place)),
                    QString::number(m_hits)) +
           (m_hits > 1 ? m_round : QString());
}

} // namespace WaveMonitor
