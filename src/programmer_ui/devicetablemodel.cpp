#include "devicetablemodel.h"

#include <programmer/devicedatabase.h>
#include <widgets/messagebox.h>
#include <widgets/plaintip.h>

#include <QApplication>
#include <QDir>

#include <utility>

namespace KEO {

DeviceTableModel::DeviceTableModel(QObject *parent)
    : QAbstractTableModel(parent), m_database(DeviceDatabase::installed())
{
}

void DeviceTableModel::setDatabase(std::shared_ptr<const DeviceDatabase> database)
{
    Q_ASSERT(database);
    replaceRows({});
    m_database = std::move(database);
}

void DeviceTableModel::setOperation(int row, const DeviceOperation *operation)
{
    if (row < 0 || row >= m_rows.size())
        return;
    m_rows[row].operation = operation;
    rowChanged(row);
}

int DeviceTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int DeviceTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant DeviceTableModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || !checkIndex(index))
        return {};
    const DeviceRow &row = m_rows.at(index.row());
    const auto column = Column(index.column());
    switch (role) {
    case Qt::CheckStateRole:
        if (column == Enable)
            return row.enabled ? Qt::Checked : Qt::Unchecked;
        return {};
    case Qt::EditRole:
        if (column == IrCode)
            return row.irCode;
        [[fallthrough]];
    case Qt::DisplayRole:
        return column == Enable ? QVariant() : displayText(row, column);
    case Qt::ToolTipRole:
        if (column == FsFile && !row.fsFile.isEmpty())
            return plainTip(QDir::toNativeSeparators(row.fsFile));
        if (column == Operation && row.operation)
            return plainTip(row.operation->description);
        return {};
    default:
        return {};
    }
}

QString DeviceTableModel::displayText(const DeviceRow &row, Column column) const
{
    switch (column) {
    case Series:
        return row.series;
    case Device:
        return row.device;
    case Operation:
        return row.operation ? row.operation->name : tr("Bypass");
    case FsFile:
        return row.fsFile;
    case Checksum:
        return row.checksum;
    case UserCode:
        return row.userCode;
    case IdCode:
        return row.idCode;
    case IrCode:
        return QString::number(row.irCode);
    case Enable:
    case ColumnCount:
        break;
    }
    return {};
}

bool DeviceTableModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid() || !checkIndex(index))
        return false;
    const auto column = Column(index.column());
    if (column == Enable)
        return role == Qt::CheckStateRole && setTarget(index.row(), value.toInt() == Qt::Checked);
    if (role != Qt::EditRole)
        return false;
    DeviceRow &row = m_rows[index.row()];
    QString newFile;
    switch (column) {
    case Series:
        chooseSeries(row, *m_database, value.toInt());
        break;
    case Device:
        chooseDevice(row, *m_database, value.toInt());
        break;
    case FsFile:
        newFile = value.toString();
        if (newFile.isEmpty())
            return false;
        clearBitstream(row); // what the header of the file before told
        row.fsFile = newFile;
        break;
    case Checksum:
        row.checksum = value.toString();
        break;
    case UserCode:
        row.userCode = value.toString();
        break;
    case IdCode:
        row.idCode = value.toString();
        break;
    case IrCode:
        row.irCode = value.toInt();
        break;
    case Enable:
    case Operation:
    case ColumnCount:
        return false;
    }
    rowChanged(index.row());
    Q_EMIT filesChanged();
    if (!newFile.isEmpty())
        Q_EMIT fileChosen(newFile);
    return true;
}

bool DeviceTableModel::setTarget(int position, bool enabled)
{
    if (m_rows.at(position).enabled == enabled)
        return false;
    if (enabled) {
        for (DeviceRow &row : m_rows)
            row.enabled = false;
    }
    m_rows[position].enabled = enabled;
    Q_EMIT dataChanged(index(0, Enable), index(int(m_rows.size()) - 1, Enable));
    Q_EMIT targetChosen(m_rows.at(position).status);
    return true;
}

QVariant DeviceTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Enable:
        return tr("Enable");
    case Series:
        return tr("Series");
    case Device:
        return tr("Device");
    case Operation:
        return tr("Operation");
    case FsFile:
        return tr("Fs File");
    case Checksum:
        return tr("Checksum");
    case UserCode:
        return tr("User Code");
    case IdCode:
        return tr("ID Code");
    case IrCode:
        return tr("IRCode");
    default:
        return {};
    }
}

Qt::ItemFlags DeviceTableModel::flags(const QModelIndex &index) const
{
    if (!index.isValid() || !checkIndex(index))
        return Qt::NoItemFlags;
    const bool isKnown = m_rows.at(index.row()).kind == DeviceRow::kKnown;
    constexpr Qt::ItemFlags readable = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    constexpr Qt::ItemFlags editable = readable | Qt::ItemIsEditable;
    switch (index.column()) {
    case Enable:
        return isKnown ? Qt::ItemIsUserCheckable | Qt::ItemIsEnabled : Qt::NoItemFlags;
    case Series:
    case Device:
        return editable;
    case FsFile:
        return isKnown ? editable : readable;
    case IrCode:
        return isKnown ? Qt::ItemIsSelectable : editable;
    default:
        return readable;
    }
}

void DeviceTableModel::onAddNewDevice()
{
    if (m_rows.size() > kFullChain) {
        showBox(QMessageBox::Warning, QApplication::activeWindow(), tr("Warning"),
                tr("Exceeding the maximum number of devices."));
        return;
    }
    replaceRows(m_rows + DeviceChain{newDeviceRow(*m_database)});
}

void DeviceTableModel::onRemoveDevice(const QModelIndex &index)
{
    if (!index.isValid() || !checkIndex(index))
        return;
    DeviceChain rows = m_rows;
    rows.remove(index.row());
    replaceRows(rows);
}

void DeviceTableModel::onMoveUp(const QModelIndex &index)
{
    moveRow(index.row(), index.row() - 1);
}

void DeviceTableModel::onMoveDown(const QModelIndex &index)
{
    moveRow(index.row(), index.row() + 1);
}

void DeviceTableModel::moveRow(int from, int to)
{
    if (qMin(from, to) < 0 || qMax(from, to) >= m_rows.size())
        return;
    DeviceChain rows = m_rows;
    rows.move(from, to);
    replaceRows(rows);
}

void DeviceTableModel::replaceRows(DeviceChain rows)
{
    beginResetModel();
    m_rows = std::move(rows);
    ++m_generation;
    endResetModel();
    Q_EMIT filesChanged();
}

void DeviceTableModel::rowChanged(int row)
{
    Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

} // namespace KEO
