// The rows of the device table: what a view sees of them, and how the user changes them.

#include "keoprogrammermodel.h"

#include <programmer/devicedatabase.h>
#include <widgets/messagebox.h>

#include <QApplication>
#include <QDir>

#include <utility>

namespace KEO {

int KeoProgrammerModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int KeoProgrammerModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant KeoProgrammerModel::data(const QModelIndex &index, int role) const
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
            return QDir::toNativeSeparators(row.fsFile);
        if (column == Operation && row.operation)
            return row.operation->description;
        return {};
    default:
        return {};
    }
}

QString KeoProgrammerModel::displayText(const DeviceRow &row, Column column) const
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

bool KeoProgrammerModel::setData(const QModelIndex &index, const QVariant &value, int role)
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
    watchFiles();
    if (!newFile.isEmpty())
        readFsFile(newFile, Cause::Chosen);
    return true;
}

bool KeoProgrammerModel::setTarget(int position, bool enabled)
{
    if (m_rows.at(position).enabled == enabled)
        return false;
    if (enabled) {
        for (DeviceRow &row : m_rows)
            row.enabled = false;
    }
    m_rows[position].enabled = enabled;
    Q_EMIT dataChanged(index(0, Enable), index(int(m_rows.size()) - 1, Enable));
    Q_EMIT statusChanged(m_rows.at(position).status, QStringList());
    return true;
}

QVariant KeoProgrammerModel::headerData(int section, Qt::Orientation orientation, int role) const
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

Qt::ItemFlags KeoProgrammerModel::flags(const QModelIndex &index) const
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

void KeoProgrammerModel::onAddNewDevice()
{
    if (m_rows.size() > kFullChain) {
        showBox(QMessageBox::Warning, QApplication::activeWindow(), tr("Warning"),
                tr("Exceeding the maximum number of devices."));
        return;
    }
    replaceRows(m_rows + DeviceChain{newDeviceRow(*m_database)});
}

void KeoProgrammerModel::onRemoveDevice(const QModelIndex &index)
{
    if (!index.isValid() || !checkIndex(index))
        return;
    DeviceChain rows = m_rows;
    rows.remove(index.row());
    replaceRows(rows);
}

void KeoProgrammerModel::onMoveUp(const QModelIndex &index)
{
    moveRow(index.row(), index.row() - 1);
}

void KeoProgrammerModel::onMoveDown(const QModelIndex &index)
{
    moveRow(index.row(), index.row() + 1);
}

void KeoProgrammerModel::moveRow(int from, int to)
{
    if (qMin(from, to) < 0 || qMax(from, to) >= m_rows.size())
        return;
    DeviceChain rows = m_rows;
    rows.move(from, to);
    replaceRows(rows);
}

void KeoProgrammerModel::replaceRows(DeviceChain rows)
{
    beginResetModel();
    m_rows = std::move(rows);
    ++m_generation;
    endResetModel();
    watchFiles();
}

void KeoProgrammerModel::rowChanged(int row)
{
    Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

} // namespace KEO
