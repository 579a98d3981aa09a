#pragma once

#include <QAbstractTableModel>
#include <QList>

namespace KEO {

struct MatchUnit;

/// Match units as a table, a row each. Keeps no copies: every cell is computed from the unit when
/// it is asked for, so after a unit has changed it is enough to redraw the view.
///
/// An index carries its unit as internal pointer. Column 0 repeats the name with a check box for
/// `enabled`; views that have no use for it hide it.
class MatchUnitModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Check, Unit, Port, Type, Function, Counter, Value, ColumnCount };

    using QAbstractTableModel::QAbstractTableModel;

    /// Shows \a units, which are borrowed: call clear() before they are deleted.
    void setUnits(const QList<MatchUnit *> &units);
    void clear();
    /// The unit of a valid index, or null.
    [[nodiscard]] static MatchUnit *unitOfIndex(const QModelIndex &index);

    [[nodiscard]] QModelIndex index(int row, int column,
                                    const QModelIndex &parent = {}) const override;
    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    /// Takes a check state for column 0 only, and writes it into the unit.
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;

Q_SIGNALS:
    /// setData changed a unit.
    void modified();

private:
    [[nodiscard]] QString displayText(const MatchUnit &unit, Column column) const;

    QList<MatchUnit *> m_units; // borrowed
};

} // namespace KEO
