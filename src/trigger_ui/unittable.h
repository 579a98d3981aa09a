#pragma once

#include <QList>
#include <QTableView>

namespace KEO {

class MatchUnitModel;
struct MatchUnit;

/// The table of a core's match units, a row each. Its last column, the value, takes the room that
/// the others leave, and more if it must.
class UnitTable final : public QTableView
{
    Q_OBJECT

public:
    /// \a model is borrowed and outlives the table.
    explicit UnitTable(MatchUnitModel *model, QWidget *parent = nullptr);

    /// In the order of the rows.
    [[nodiscard]] QList<MatchUnit *> selectedUnits() const;
    /// Selects the row of the unit with that index.
    void selectUnit(int index);
    /// The index of the unit in the current row, or -1.
    [[nodiscard]] int currentUnit() const;
    /// Selects the rows of these units and makes that of \a current the current one, as far as the
    /// table has them.
    void restoreRows(int current, const QList<int> &selected);
    /// The units have changed, or are others.
    void redraw();

protected:
    void resizeEvent(QResizeEvent *event) override;
    /// Reached by the Tab key, a row gets selected that Enter opens.
    void focusInEvent(QFocusEvent *event) override;

private:
    void fitValueColumn();
    void selectCurrentRow();
};

} // namespace KEO
