// Rows, items and notifications; how rows are arranged stands in signaltreearrangement.cpp.

#include "signaltreemodel.h"

#include "signaltreeview.h"

#include <wave/common/timesliderdata.h>
#include <wave_data/rowtext.h>

#include <QDomDocument>
#include <QDomElement>
#include <QFont>
#include <QtDebug>

#include <algorithm>

namespace WaveMonitor {

namespace {

constexpr QRgb kMemberBackground = 0xFFDDDDDD;

} // namespace

SignalTreeModel::SignalTreeModel(QObject *parent) : QAbstractItemModel(parent), m_items(m_contents)
{
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
    raiseLater(this, EvStructureChanged);
}

void SignalTreeModel::addBus(const BusElement &bus)
{
    qDebug().noquote() << "add item for bus: " << bus.name;
    const int row = rowCount();
    beginInsertRows({}, row, row);
    m_contents.addBus(bus);
    endInsertRows();
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

LayoutNode *SignalTreeModel::node(const QModelIndex &index) const
{
    if (index.isValid())
        return static_cast<LayoutNode *>(index.internalPointer());
    return const_cast<LayoutNode *>(&m_contents.layout());
}

QModelIndex SignalTreeModel::indexOf(const LayoutNode *node) const
{
    if (!node->parent)
        return {};
    return createIndex(node->parent->childIndex(node), NameColumn, node);
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

void SignalTreeModel::updateViewport()
{
    if (m_view)
        m_view->viewport()->update();
}

// The item model

QModelIndex SignalTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    return createIndex(row, column, node(parent)->child(row));
}

QModelIndex SignalTreeModel::parent(const QModelIndex &index) const
{
    return index.isValid() ? indexOf(node(index)->parent) : QModelIndex();
}

int SignalTreeModel::rowCount(const QModelIndex &parent) const
{
    return parent.column() > NameColumn ? 0 : int(node(parent)->children.size());
}

int SignalTreeModel::columnCount(const QModelIndex &) const
{
    return 2;
}

QVariant SignalTreeModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const LayoutNode &row = *node(index);
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return index.column() == NameColumn ? rowName(m_contents, row) : rowValue(m_contents, row);
    case Qt::FontRole:
        if (index.column() == NameColumn) {
            QFont font;
            font.setItalic(isRowRenamed(m_contents, row));
            return font;
        }
        return {};
    case Qt::BackgroundRole:
        return row.parent->type == LayoutNode::Bus ? QColor(kMemberBackground) : QColor(Qt::white);
    default:
        return {};
    }
}

bool SignalTreeModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    const QString text = value.toString();
    if (!index.isValid() || index.column() != NameColumn || role != Qt::EditRole || text.isEmpty())
        return false;
    LayoutNode *row = node(index);
    if (row->type == LayoutNode::Bus) {
        auto *bus = static_cast<BusLayoutNode *>(row);
        bus->text = text == bus->name ? QString() : text;
    } else {
        static_cast<SignalLayoutNode *>(row)->text = text;
    }
    Q_EMIT dataChanged(index, index);
    return true;
}

QVariant SignalTreeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case NameColumn:
        return tr("Name");
    case ValueColumn:
        return tr("Value");
    default:
        return QString();
    }
}

Qt::DropActions SignalTreeModel::supportedDropActions() const
{
    return Qt::CopyAction | Qt::MoveAction;
}

Qt::DropActions SignalTreeModel::supportedDragActions() const
{
    return supportedDropActions();
}

Qt::ItemFlags SignalTreeModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    const Qt::ItemFlags shared = Qt::ItemIsDragEnabled | Qt::ItemIsEnabled;
    if (index.column() != NameColumn)
        return shared;
    return shared | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsDropEnabled;
}

} // namespace WaveMonitor
