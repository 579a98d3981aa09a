#pragma once

#include <programmer/devicechain.h>

#include <QAbstractTableModel>

#include <memory>

namespace KEO {

class DeviceDatabase;

/// The devices on the chain as a table, a row each: what a view sees of them, and how the user
/// changes them. Owns the rows; knows nothing of files and the tool. GUI thread.
class DeviceTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column {
        Enable,
        Series,
        Device,
        Operation,
        FsFile,
        Checksum,
        UserCode,
        IdCode,
        IrCode,
        ColumnCount
    };
    static constexpr qsizetype kFullChain = 16; ///< rows that still take one more: 17 at most

    /// With the installed database.
    explicit DeviceTableModel(QObject *parent = nullptr);

    /// Another database. Drops all rows, which point into the one before.
    void setDatabase(std::shared_ptr<const DeviceDatabase> database);
    [[nodiscard]] const DeviceDatabase &database() const { return *m_database; }
    [[nodiscard]] std::shared_ptr<const DeviceDatabase> sharedDatabase() const
    {
        return m_database;
    }
    [[nodiscard]] const DeviceChain &rows() const { return m_rows; }
    /// \a operation is of the database, or null for bypass.
    void setOperation(int row, const DeviceOperation *operation);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    /// Takes a check state in column Enable, an index of the combo box in Series and Device, a
    /// number in IrCode and a text elsewhere.
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;

public Q_SLOTS:
    void onAddNewDevice();
    void onRemoveDevice(const QModelIndex &index);
    void onMoveUp(const QModelIndex &index);
    void onMoveDown(const QModelIndex &index);

Q_SIGNALS:
    /// The rows may name other files than before.
    void filesChanged();
    /// The user gave a row the file \a path.
    void fileChosen(const QString &path);
    /// The user enabled or disabled a row, whose status this is.
    void targetChosen(KEO::ProgrammerStatus status);

protected:
    void replaceRows(DeviceChain rows);
    void rowChanged(int row);

    std::shared_ptr<const DeviceDatabase> m_database; // never null
    DeviceChain m_rows;
    quint64 m_generation = 0; // counts the times that all rows were replaced

private:
    [[nodiscard]] QString displayText(const DeviceRow &row, Column column) const;
    bool setTarget(int position, bool enabled);
    void moveRow(int from, int to);
};

} // namespace KEO
