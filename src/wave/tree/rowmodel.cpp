#include "rowmodel.h"

#include <wave_data/rowtext.h>

#include <QColor>
#include <QFont>
#include <QIcon>
#include <QLineF>
#include <QPainter>
#include <QPen>
#include <QPixmap>
#include <QtDebug>

#include <algorithm>

namespace WaveMonitor {

namespace {

constexpr QRgb kMemberBackground = 0xFFDDDDDD;
constexpr QRgb kDifferenceColor = 0xFFC2006B;
constexpr int kIconSide = 16; // pixels

/// Adds the signals of a row: itself, or the members of a bus.
void appendLeaves(QList<const LayoutNode *> &leaves, const LayoutNode *row)
{
    if (row->type == LayoutNode::Signal)
        leaves.append(row);
    for (const auto &member : row->children)
        leaves.append(member.get());
}

/// The sign for "not equal".
QIcon differenceIcon()
{
    static const QIcon icon = [] {
        QIcon drawn;
        for (const int scale : {1, 2, 3}) {
            QPixmap pixmap(kIconSide * scale, kIconSide * scale);
            pixmap.setDevicePixelRatio(scale);
            pixmap.fill(Qt::transparent);
            QPainter painter(&pixmap);
            painter.setRenderHint(QPainter::Antialiasing);
            painter.setPen(QPen(QColor(kDifferenceColor), 2.0, Qt::SolidLine, Qt::RoundCap));
            painter.drawLine(QLineF(2, 6, 14, 6));
            painter.drawLine(QLineF(2, 10, 14, 10));
            painter.drawLine(QLineF(5, 14, 11, 2));
            drawn.addPixmap(pixmap);
        }
        return drawn;
    }();
    return icon;
}

/// The child after \a node under its parent, or null.
LayoutNode *nextSibling(const LayoutNode *node)
{
    return node->parent->child(node->parent->childIndex(node) + 1);
}

} // namespace

RowModel::RowModel(QObject *parent) : QAbstractItemModel(parent)
{
}

LayoutNode *RowModel::node(const QModelIndex &index) const
{
    if (index.isValid())
        return static_cast<LayoutNode *>(index.internalPointer());
    return const_cast<LayoutNode *>(&m_contents.layout());
}

QModelIndex RowModel::indexOf(const LayoutNode *node) const
{
    if (!node->parent)
        return {};
    return createIndex(node->parent->childIndex(node), NameColumn, node);
}

// The item model

QModelIndex RowModel::index(int row, int column, const QModelIndex &parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    return createIndex(row, column, node(parent)->child(row));
}

QModelIndex RowModel::parent(const QModelIndex &index) const
{
    return index.isValid() ? indexOf(node(index)->parent) : QModelIndex();
}

int RowModel::rowCount(const QModelIndex &parent) const
{
    return parent.column() > NameColumn ? 0 : int(node(parent)->children.size());
}

int RowModel::columnCount(const QModelIndex &) const
{
    return 2;
}

QVariant RowModel::data(const QModelIndex &index, int role) const
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
    case Qt::DecorationRole:
        if (index.column() != NameColumn || m_markedSignals.isEmpty() || !isMarked(row))
            return {};
        return differenceIcon();
    case Qt::ToolTipRole:
    case Qt::AccessibleDescriptionRole:
        if (index.column() != NameColumn || m_markedSignals.isEmpty() || !isMarked(row))
            return {};
        return tr("Differs from the window it is compared with");
    case Qt::BackgroundRole:
        return row.parent->type == LayoutNode::Bus ? QColor(kMemberBackground) : QColor(Qt::white);
    default:
        return {};
    }
}

bool RowModel::setData(const QModelIndex &index, const QVariant &value, int role)
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

QVariant RowModel::headerData(int section, Qt::Orientation orientation, int role) const
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

Qt::DropActions RowModel::supportedDropActions() const
{
    return Qt::CopyAction | Qt::MoveAction;
}

Qt::DropActions RowModel::supportedDragActions() const
{
    return supportedDropActions();
}

Qt::ItemFlags RowModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    const Qt::ItemFlags shared = Qt::ItemIsDragEnabled | Qt::ItemIsEnabled;
    if (index.column() != NameColumn)
        return shared;
    return shared | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsDropEnabled;
}

// Marks

void RowModel::setMarkedSignals(const QSet<int> &ids)
{
    if (ids == m_markedSignals)
        return;
    m_markedSignals = ids;
    const QList<int> roles{Qt::DecorationRole, Qt::ToolTipRole, Qt::AccessibleDescriptionRole};
    for (int row = 0; row < rowCount(); ++row) {
        const QModelIndex bus = index(row, NameColumn);
        Q_EMIT dataChanged(bus, bus, roles);
        if (const int members = rowCount(bus); members > 0)
            Q_EMIT dataChanged(index(0, NameColumn, bus), index(members - 1, NameColumn, bus),
                               roles);
    }
}

bool RowModel::isMarked(const LayoutNode &row) const
{
    if (row.type == LayoutNode::Signal)
        return m_markedSignals.contains(static_cast<const SignalLayoutNode &>(row).id);
    return std::any_of(row.children.cbegin(), row.children.cend(),
                       [this](const auto &member) { return isMarked(*member); });
}

// Grouping

QString RowModel::groupingObstacle(const QList<const LayoutNode *> &nodes) const
{
    QList<const LayoutNode *> leaves;
    for (const LayoutNode *each : nodes) {
        if (each->parent != &m_contents.layout())
            return QStringLiteral("not all rows stand at the top level!");
        appendLeaves(leaves, each);
    }
    if (leaves.isEmpty())
        return QStringLiteral("there are no signals!");
    const auto length = [this](const LayoutNode *leaf) {
        const auto *signal = static_cast<const SignalLayoutNode *>(leaf);
        const SignalElement *element = m_contents.signal(signal->id);
        return element ? element->data.size() : 0;
    };
    const qsizetype reference = length(leaves.first());
    const bool equal = std::all_of(leaves.cbegin(), leaves.cend(), [&](const LayoutNode *leaf) {
        return length(leaf) == reference;
    });
    return equal ? QString() : QStringLiteral("signals have different data length!");
}

void RowModel::groupRows(const QModelIndexList &indexes)
{
    const QList<LayoutNode *> rows = nodesOf(indexes);
    const QList<const LayoutNode *> nodes(rows.cbegin(), rows.cend());
    const QString obstacle = groupingObstacle(nodes);
    qDebug().noquote() << "signals are avilable to group bus: "
                       << (obstacle.isEmpty() ? QStringLiteral("YES!")
                                              : QStringLiteral("NO - ") + obstacle);
    if (obstacle.isEmpty()) {
        groupNodes(nodes);
        Q_EMIT structureChanged();
    }
}

/// Detaches the top-level rows \a first to \a last.
LayoutNode::List RowModel::takeRows(int first, int last)
{
    LayoutNode &root = m_contents.layout();
    LayoutNode::List taken;
    beginRemoveRows({}, first, last);
    for (int row = first; row <= last; ++row)
        taken.push_back(root.takeChild(first));
    endRemoveRows();
    return taken;
}

void RowModel::groupNodes(const QList<const LayoutNode *> &nodes)
{
    LayoutNode &root = m_contents.layout();
    auto bus = std::make_unique<BusLayoutNode>();
    bus->name = m_contents.newBusName(nodes);
    const int busRow = root.childIndex(nodes.first());

    // Rows that stand side by side leave together: every removal costs the views a pass.
    for (qsizetype next = 0; next < nodes.size();) {
        const int first = root.childIndex(nodes[next]);
        int last = first;
        while (++next < nodes.size() && root.child(last + 1) == nodes[next])
            ++last;
        for (auto &taken : takeRows(first, last)) {
            if (taken->type == LayoutNode::Signal) {
                bus->appendChild(std::move(taken));
                continue;
            }
            for (auto &member : taken->takeChildren())
                bus->appendChild(std::move(member));
            Q_EMIT rowFreed(taken.get());
            qDebug().noquote() << "release node: " << rowName(m_contents, *taken)
                               << static_cast<const void *>(taken.get());
        }
    }
    beginInsertRows({}, busRow, busRow);
    root.insertChild(busRow, std::move(bus));
    endInsertRows();
}

void RowModel::ungroupBus(const QModelIndex &index)
{
    qDebug() << "ungroup bus at index: " << index;
    if (!index.isValid() || node(index)->type != LayoutNode::Bus)
        return;
    const int row = index.row();
    const LayoutNode::List taken = takeRows(row, row);
    LayoutNode &bus = *taken.front();
    if (!bus.children.empty()) {
        beginInsertRows({}, row, row + int(bus.children.size()) - 1);
        int position = row;
        for (auto &member : bus.takeChildren())
            m_contents.layout().insertChild(position++, std::move(member));
        endInsertRows();
    }
    Q_EMIT rowFreed(&bus);
    Q_EMIT structureChanged();
}

void RowModel::restoreOriginalName(const QModelIndex &index)
{
    if (!index.isValid())
        return;
    LayoutNode *row = node(index);
    if (row->type == LayoutNode::Bus) {
        static_cast<BusLayoutNode *>(row)->text.clear();
    } else {
        auto *signal = static_cast<SignalLayoutNode *>(row);
        signal->text.clear();
        m_contents.clearSignalText(signal->id);
    }
    const QModelIndex name = index.siblingAtColumn(NameColumn);
    Q_EMIT dataChanged(name, name);
}

void RowModel::reverse(const QModelIndex &bus)
{
    if (!bus.isValid() || node(bus)->type != LayoutNode::Bus)
        return;
    const QList<QPersistentModelIndex> parents{bus.siblingAtColumn(NameColumn)};
    Q_EMIT layoutAboutToBeChanged(parents);
    LayoutNode *row = node(bus);
    row->reverseChildren();
    const int last = int(row->children.size()) - 1;
    for (const QModelIndex &old : persistentIndexList()) {
        if (node(old)->parent == row)
            changePersistentIndex(
                old, createIndex(last - old.row(), old.column(), old.internalPointer()));
    }
    Q_EMIT layoutChanged(parents);
    Q_EMIT structureChanged();
}

void RowModel::restoreLayout(const LayoutSnapshot &snapshot)
{
    const bool stay = haveSamePlaces(m_contents.snapshot().rows, snapshot.rows);
    if (!stay)
        beginResetModel();
    const LayoutNode::List gone = m_contents.restore(snapshot);
    if (!stay) {
        endResetModel();
        for (const auto &row : gone)
            Q_EMIT rowFreed(row.get());
        Q_EMIT structureChanged();
    } else if (rowCount() > 0) {
        Q_EMIT dataChanged(index(0, NameColumn), index(rowCount() - 1, ValueColumn));
        Q_EMIT rowsPlaced();
    }
}

QModelIndexList RowModel::indexesOf(const QSet<LayoutNode::Key> &keys) const
{
    QModelIndexList indexes;
    const auto look = [&](const LayoutNode::List &rows, const auto &lookInto) -> void {
        for (size_t i = 0; i < rows.size(); ++i) {
            if (keys.contains(rows[i]->key))
                indexes.append(createIndex(int(i), NameColumn, rows[i].get()));
            lookInto(rows[i]->children, lookInto);
        }
    };
    look(m_contents.layout().children, look);
    return indexes;
}

// Moving

QModelIndexList RowModel::moveAbove(const QModelIndex &target, const QModelIndexList &moved)
{
    if (!target.isValid())
        return {};
    return moveBefore(node(target), node(target)->parent, moved, EmptyBus::Dissolve);
}

QModelIndexList RowModel::moveBelow(const QModelIndex &target, const QModelIndexList &moved)
{
    if (!target.isValid())
        return {};
    return moveBefore(nextSibling(node(target)), node(target)->parent, moved, EmptyBus::Dissolve);
}

QModelIndexList RowModel::movePrepend(const QModelIndex &parent, const QModelIndexList &moved)
{
    return moveBefore(node(parent)->child(0), node(parent), moved, EmptyBus::Keep);
}

QModelIndexList RowModel::moveAppend(const QModelIndex &parent, const QModelIndexList &moved)
{
    return moveBefore(nullptr, node(parent), moved, EmptyBus::Keep);
}

/// Puts rows under \a parent before its child \a anchor, or last for null.
QModelIndexList RowModel::moveBefore(LayoutNode *anchor, LayoutNode *parent,
                                     const QModelIndexList &moved, EmptyBus emptyBus)
{
    const QList<LayoutNode *> nodes = nodesOf(moved);
    const bool intoBus = parent->type == LayoutNode::Bus;
    const bool fits = std::all_of(nodes.cbegin(), nodes.cend(), [intoBus](const LayoutNode *each) {
        return !intoBus || each->type == LayoutNode::Signal;
    });
    if (nodes.isEmpty() || parent->type == LayoutNode::Signal || !fits) {
        qDebug() << "rows cannot move there: " << moved;
        return {};
    }
    // A moved row is no landmark; what follows it is.
    while (anchor && nodes.contains(anchor))
        anchor = nextSibling(anchor);
    const QPersistentModelIndex oldParent = indexOf(nodes.first()->parent);
    for (LayoutNode *each : nodes)
        moveNode(each, parent, anchor);
    if (emptyBus == EmptyBus::Dissolve && oldParent.isValid() && node(oldParent)->children.empty())
        ungroupBus(oldParent);

    Q_EMIT rowsPlaced();
    QModelIndexList places;
    for (const LayoutNode *each : nodes)
        places.append(indexOf(each));
    return places;
}

void RowModel::moveNode(LayoutNode *node, LayoutNode *parent, const LayoutNode *anchor)
{
    LayoutNode *oldParent = node->parent;
    const int from = oldParent->childIndex(node);
    const int to = anchor ? parent->childIndex(anchor) : int(parent->children.size());
    if (!beginMoveRows(indexOf(oldParent), from, from, indexOf(parent), to))
        return; // stands there already
    std::unique_ptr<LayoutNode> taken = oldParent->takeChild(from);
    parent->insertChild(anchor ? parent->childIndex(anchor) : -1, std::move(taken));
    endMoveRows();
}

/// The rows of valid indexes, each once, in list order.
QList<LayoutNode *> RowModel::nodesOf(const QModelIndexList &indexes) const
{
    QList<LayoutNode *> nodes;
    for (const QModelIndex &index : indexes) {
        if (index.isValid() && !nodes.contains(node(index)))
            nodes.append(node(index));
    }
    return nodes;
}

} // namespace WaveMonitor
