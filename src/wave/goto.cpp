#include "goto.h"

#include <wave/common/timesliderdata.h>
#include <wave/ruler/rulerview.h>
#include <wave/tree/signaltreemodel.h>
#include <wave/tree/signaltreeview.h>
#include <wave/view/waveview.h>
#include <wave_data/rowtext.h>
#include <wave_data/samplesearch.h>

#include <QAction>
#include <QKeySequence>

#include <algorithm>

namespace WaveMonitor {

GoTo::GoTo(const ViewerPanes &panes, QWidget *viewer)
    : QObject(viewer), m_panes(panes), m_viewer(viewer)
{
    auto *separator = new QAction(this);
    separator->setSeparator(true);
    m_panes.waves->addAction(separator);
    addEntry(tr("Go to Trigger"), "goToTrigger", {Qt::Key_T, Qt::CTRL | Qt::Key_T}, &GoTo::trigger);
    addEntry(tr("Go to Start"), "goToStart", {Qt::Key_Home, Qt::CTRL | Qt::Key_Home}, &GoTo::start);
    addEntry(tr("Go to End"), "goToEnd", {Qt::Key_End, Qt::CTRL | Qt::Key_End}, &GoTo::end);
    addEntry(tr("Previous Edge"), "previousEdge", {Qt::CTRL | Qt::Key_Left}, &GoTo::previousEdge);
    addEntry(tr("Next Edge"), "nextEdge", {Qt::CTRL | Qt::Key_Right}, &GoTo::nextEdge);
    addEntry(tr("Previous Marker"), "previousMarker", {Qt::CTRL | Qt::SHIFT | Qt::Key_M},
             &GoTo::previousMarker);
    addEntry(tr("Next Marker"), "nextMarker", {Qt::CTRL | Qt::Key_M}, &GoTo::nextMarker);
}

/// \a keys with Ctrl work everywhere in the viewer, the others over the waves alone.
void GoTo::addEntry(const QString &text, const char *name, const QList<QKeySequence> &keys,
                    void (GoTo::*go)())
{
    auto *entry = new QAction(text, this);
    entry->setObjectName(QString::fromLatin1(name));
    entry->setShortcut(keys.first());
    entry->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    entry->setShortcutVisibleInContextMenu(true);
    connect(entry, &QAction::triggered, this, go);
    m_panes.waves->addAction(entry);
    if (keys.size() == 1) {
        m_viewer->addAction(entry);
        return;
    }
    auto *everywhere = new QAction(text, this);
    everywhere->setShortcut(keys.last());
    everywhere->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connect(everywhere, &QAction::triggered, this, go);
    m_viewer->addAction(everywhere);
}

void GoTo::sample(qsizetype sample)
{
    const int samples = m_panes.model->maxDataLength();
    if (samples < 1)
        return;
    m_last = int(std::clamp<qsizetype>(sample, 0, samples - 1));
    m_panes.ruler->moveActiveMarker(*m_last);
    m_panes.waves->centreOn(*m_last);
}

int GoTo::place() const
{
    if (const TimeSliderData *marker = m_panes.ruler->timeMarker())
        return marker->clock();
    if (m_last && m_panes.waves->isInView(*m_last))
        return *m_last;
    return m_panes.waves->middleSample();
}

void GoTo::trigger()
{
    sample(m_panes.model->triggerPosition());
}

void GoTo::start()
{
    sample(0);
}

void GoTo::end()
{
    sample(m_panes.model->maxDataLength() - 1);
}

void GoTo::previousEdge()
{
    edge(Direction::Back);
}

void GoTo::nextEdge()
{
    edge(Direction::Forth);
}

void GoTo::edge(Direction direction)
{
    const QModelIndexList rows = m_panes.tree->selectedRows();
    if (rows.isEmpty()) {
        Q_EMIT said(tr("Select rows to go from edge to edge."));
        return;
    }
    QList<QBitArray> members;
    for (const QModelIndex &row : rows)
        members.append(rowMembers(m_panes.model->contents(), *m_panes.model->node(row)));
    const SampleSearch search(members, {.kind = SamplePattern::Change});
    const int from = place();
    const auto found = direction == Direction::Forth ? search.next(from) : search.previous(from);
    if (found)
        sample(*found);
    else if (direction == Direction::Forth)
        Q_EMIT said(tr("No edge after sample %1.").arg(from));
    else
        Q_EMIT said(tr("No edge before sample %1.").arg(from));
}

void GoTo::previousMarker()
{
    marker(Direction::Back);
}

void GoTo::nextMarker()
{
    marker(Direction::Forth);
}

/// From marker to marker along the samples, and round.
void GoTo::marker(Direction direction)
{
    const QList<TimeSliderData *> markers = m_panes.ruler->timeMarkers();
    if (markers.isEmpty()) {
        Q_EMIT said(tr("There is no marker."));
        return;
    }
    const bool isForth = direction == Direction::Forth;
    const int from = markers.first()->clock();
    std::optional<int> next;
    std::optional<int> outermost;
    for (const TimeSliderData *each : markers) {
        const int clock = each->clock();
        const auto isNearer = [&](const std::optional<int> &than) {
            return !than || (isForth ? clock < *than : clock > *than);
        };
        if ((isForth ? clock > from : clock < from) && isNearer(next))
            next = clock;
        if (isNearer(outermost))
            outermost = clock;
    }
    m_last = next ? next : outermost;
    m_panes.ruler->activateMarkerAt(*m_last);
    m_panes.waves->centreOn(*m_last);
}

} // namespace WaveMonitor
