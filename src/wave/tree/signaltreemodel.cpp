#include "signaltreemodel.h"

#include "signaltreeview.h"

#include <wave/common/timesliderdata.h>

#include <QDomDocument>
#include <QDomElement>
#include <QtDebug>

#include <utility>

namespace WaveMonitor {

SignalTreeModel::SignalTreeModel(QObject *parent) : RowModel(parent), m_items(m_contents)
{
    connect(this, &RowModel::rowFreed, this,
            [this](const LayoutNode *row) { m_items.removeItem(row); });
    connect(this, &RowModel::structureChanged, this,
            [this] { raiseLater(this, EvStructureChanged); });
    connect(this, &RowModel::rowsPlaced, this, [this] {
        recalculateWaveItems();
        raiseLater(this, EvRepaintItems);
    });
    NotificationCenter::instance()->subscribe(
        this, {4, EvFormatChanged, EvBeforeMarkerCreate, EvAfterMarkerCreate, EvBeforeMarkerChange,
               EvAfterMarkerChange, EvBeforeMarkerRemove, EvAfterMarkerRemove, 21, EvColorChanged});
}

SignalTreeModel::~SignalTreeModel()
{
    NotificationCenter::instance()->unsubscribe(this);
}

void SignalTreeModel::addSignal(const SignalElement &signal)
{
    const int row = rowCount();
    beginInsertRows({}, row, row);
    m_contents.addSignal(signal);
    endInsertRows();
    Q_EMIT rowsReplaced();
    raiseLater(this, EvStructureChanged);
}

void SignalTreeModel::addBus(const BusElement &bus)
{
    qDebug().noquote() << "add item for bus: " << bus.name;
    const int row = rowCount();
    beginInsertRows({}, row, row);
    m_contents.addBus(bus);
    endInsertRows();
    Q_EMIT rowsReplaced();
    raiseLater(this, EvStructureChanged);
}

void SignalTreeModel::setTriggerPosition(int sample)
{
    m_contents.setTriggerPosition(sample);
    updateViewport();
    raiseLater(this, EvStructureChanged);
}

bool SignalTreeModel::readWindow(const QDomElement &window)
{
    if (window.tagName() != QLatin1String("Window")) {
        qDebug().noquote() << "not a window: " << window.tagName();
        return true;
    }
    beginResetModel();
    qDebug() << "signals cleared: " << m_contents.signalMap().size();
    m_items.clear();
    m_contents.readWindow(window);
    m_items.refreshItemColors();
    endResetModel();
    Q_EMIT rowsReplaced();
    raiseLater(this, EvStructureChanged);
    raiseLater(this, EvRepaintItems);
    return true;
}

void SignalTreeModel::setContents(WindowContents contents)
{
    beginResetModel();
    m_items.clear();
    m_contents = std::move(contents);
    endResetModel();
    Q_EMIT rowsReplaced();
    raiseLater(this, EvStructureChanged);
    raiseLater(this, EvRepaintItems);
}

QDomElement SignalTreeModel::writeWindow(QDomDocument &document) const
{
    return m_contents.writeWindow(document);
}

void SignalTreeModel::setLayout(const QDomElement &layout)
{
    beginResetModel();
    m_items.clear();
    m_contents.readLayout(layout);
    m_items.refreshItemColors();
    endResetModel();
    Q_EMIT rowsReplaced();
    raiseLater(this, EvStructureChanged);
    raiseLater(this, EvRepaintItems);
}

QDomElement SignalTreeModel::writeLayout(QDomDocument &document) const
{
    return m_contents.writeLayout(document);
}

void SignalTreeModel::updateData(const QList<QBitArray> &data)
{
    if (!m_contents.updateData(data)) {
        qDebug() << "data for " << data.size()
                 << " signals, have: " << m_contents.signalMap().size();
        return;
    }
    recalculateWaveItems();
    updateViewport();
}

void SignalTreeModel::setDefaultFormat(int format)
{
    const bool known = format >= DataFormat::Binary && format <= DataFormat::Ascii;
    m_format = known ? DataFormat::Type(format) : DataFormat::Hexadecimal;
}

void SignalTreeModel::setView(SignalTreeView *view)
{
    m_view = view;
}

// Wave items

QList<QGraphicsItem *> SignalTreeModel::recalculateWaveItems()
{
    return m_items.recalculateWaveItems(
        [this](const LayoutNode *bus) { return m_view && m_view->isExpanded(indexOf(bus)); });
}

QList<QGraphicsItem *> SignalTreeModel::waveItems()
{
    return recalculateWaveItems();
}

void SignalTreeModel::relayoutItems()
{
    recalculateWaveItems();
}

void SignalTreeModel::groupBus(const QModelIndexList &indexes)
{
    groupRows(indexes);
    m_items.clearSelection();
}

void SignalTreeModel::refreshItemColors()
{
    m_items.refreshItemColors();
}

void SignalTreeModel::itemSelectionChanged(const QModelIndexList &selected,
                                           const QModelIndexList &deselected)
{
    for (const QModelIndex &index : selected)
        m_items.setSelected(node(index), true);
    for (const QModelIndex &index : deselected)
        m_items.setSelected(node(index), false);
    raiseLater(this, EvRepaintItems);
}

void SignalTreeModel::itemPressed(QGraphicsItem *item)
{
    if (!m_view)
        return;
    if (!item) {
        m_view->clearSelection();
        return;
    }
    if (const LayoutNode *row = m_items.nodeOf(item))
        m_view->pickOnly(indexOf(row));
}

const LayoutNode *SignalTreeModel::rowOf(const QGraphicsItem *item) const
{
    return m_items.nodeOf(item);
}

QList<const LayoutNode *> SignalTreeModel::shownRows()
{
    QList<const LayoutNode *> rows;
    for (int row = 0; row < rowCount(); ++row) {
        const QModelIndex at = index(row, NameColumn);
        const LayoutNode *shown = node(at);
        rows.append(shown);
        if (shown->children.empty() || !m_view || !m_view->isExpanded(at))
            continue;
        for (const auto &member : shown->children)
            rows.append(member.get());
    }
    return rows;
}

// Notifications

void SignalTreeModel::handleEvents(Notification *e)
{
    if (!concerns(*e, domain()))
        return;
    switch (e->type) {
    case EvFormatChanged:
    case EvColorChanged:
        updateViewport();
        break;
    case EvAfterMarkerCreate:
    case EvAfterMarkerChange:
    case EvBeforeMarkerRemove:
    case EvAfterMarkerRemove:
        showMarkerSample(*e->sender);
        break;
    default:
        break;
    }
}

/// The active marker's sample beside the names, or the trigger's when there is no marker.
void SignalTreeModel::showMarkerSample(const QObject &ruler)
{
    const auto markers = ruler.property("timeMarkers").value<QList<TimeSliderData *>>();
    m_contents.setShownSample(markers.isEmpty() ? m_contents.triggerPosition()
                                                : markers.first()->clock());
    updateViewport();
}

void SignalTreeModel::showValuesAt(int sample)
{
    m_contents.setShownSample(sample);
    updateViewport();
}

void SignalTreeModel::updateViewport()
{
    if (m_view)
        m_view->viewport()->update();
}

} // namespace WaveMonitor
