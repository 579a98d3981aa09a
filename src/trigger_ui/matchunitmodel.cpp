#include "matchunitmodel.h"

#include <config/coreconfig.h>
#include <config/matchtype.h>
#include <trigger/valuetext.h>

#include <QColor>

namespace KEO {

void MatchUnitModel::setUnits(const QList<MatchUnit *> &units)
{
    beginResetModel();
    m_units = units;
    endResetModel();
}

void MatchUnitModel::clear()
{
    setUnits({});
}

MatchUnit *MatchUnitModel::unitOfIndex(const QModelIndex &index)
{
    return index.isValid() ? static_cast<MatchUnit *>(index.internalPointer()) : nullptr;
}

QModelIndex MatchUnitModel::index(int row, int column, const QModelIndex &parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    return createIndex(row, column, m_units[row]);
}

int MatchUnitModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_units.size());
}

int MatchUnitModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant MatchUnitModel::data(const QModelIndex &index, int role) const
{
    const MatchUnit *unit = unitOfIndex(index);
    if (!unit)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return displayText(*unit, Column(index.column()));
    case Qt::TextAlignmentRole:
        return int(Qt::AlignCenter);
    case Qt::ForegroundRole:
        return unit->enabled ? QVariant() : QVariant(QColor(Qt::gray));
    case Qt::CheckStateRole:
        if (index.column() == Check)
            return int(unit->enabled ? Qt::Checked : Qt::Unchecked);
        return {};
    default:
        return {};
    }
}

QString MatchUnitModel::displayText(const MatchUnit &unit, Column column) const
{
    switch (column) {
    case Check:
    case Unit:
        return QStringLiteral("M%1").arg(unit.index);
    case Port:
        return unit.trigger ? tr("Trigger %1").arg(unit.trigger->index) : tr("NONE");
    case Type:
        return matchTypeText(unit.match_type);
    case Function:
        return matchFunctionText(unit.func);
    case Counter:
        return unit.counter_enable ? QString::number(unit.counter) : tr("Disabled");
    case Value:
        return valueText(unit);
    case ColumnCount:
        break;
    }
    return {};
}

bool MatchUnitModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    MatchUnit *unit = unitOfIndex(index);
    if (!unit || index.column() != Check || role != Qt::CheckStateRole)
        return false;
    unit->enabled = value.toInt() != Qt::Unchecked;
    Q_EMIT dataChanged(index, index.siblingAtColumn(ColumnCount - 1));
    Q_EMIT modified();
    return true;
}

QVariant MatchUnitModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    if (orientation == Qt::Vertical)
        return QString::number(section);
    switch (section) {
    case Check:
    case Unit:
        return tr("Match Unit");
    case Port:
        return tr("Trigger Port");
    case Type:
        return tr("Match Type");
    case Function:
        return tr("Function");
    case Counter:
        return tr("Counter");
    case Value:
        return tr("Value");
    default:
        return {};
    }
}

Qt::ItemFlags MatchUnitModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    const Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    return index.column() == Check ? flags | Qt::ItemIsUserCheckable : flags;
}

} // namespace KEO
