#include "unittable.h"

#include "matchunitmodel.h"
#include "unitdelegate.h"

#include <config/coreconfig.h>

#include <QFocusEvent>
#include <QHeaderView>
#include <QItemSelectionModel>

#include <algorithm>
#include <utility>

namespace KEO {

namespace {

constexpr int kValueColumnWidth = 300; // pixels, at least

} // namespace

UnitTable::UnitTable(MatchUnitModel *model, QWidget *parent) : QTableView(parent)
{
    setModel(model);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setTabKeyNavigation(false); // the page has no use for Tab inside the table
    setWordWrap(false);
    setColumnHidden(MatchUnitModel::Check, true);
    setColumnWidth(MatchUnitModel::Value, kValueColumnWidth);
    horizontalHeader()->setHighlightSections(false);
    verticalHeader()->hide();
    setItemDelegate(new UnitDelegate(this));
}

QList<MatchUnit *> UnitTable::selectedUnits() const
{
    QModelIndexList rows = selectionModel()->selectedRows();
    std::ranges::sort(rows, {}, &QModelIndex::row);
    QList<MatchUnit *> units;
    for (const QModelIndex &row : std::as_const(rows))
        units.append(MatchUnitModel::unitOfIndex(row));
    return units;
}

void UnitTable::selectUnit(int index)
{
    for (int row = 0; row < model()->rowCount(); ++row) {
        if (MatchUnitModel::unitOfIndex(model()->index(row, MatchUnitModel::Unit))->index == index)
            selectRow(row);
    }
}

int UnitTable::currentUnit() const
{
    const MatchUnit *unit = MatchUnitModel::unitOfIndex(currentIndex());
    return unit ? unit->index : -1;
}

void UnitTable::restoreRows(int current, const QList<int> &selected)
{
    selectionModel()->clear();
    for (int row = 0; row < model()->rowCount(); ++row) {
        const QModelIndex index = model()->index(row, MatchUnitModel::Unit);
        const int unit = MatchUnitModel::unitOfIndex(index)->index;
        if (unit == current)
            selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
        if (selected.contains(unit))
            selectionModel()->select(index,
                                     QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
}

void UnitTable::redraw()
{
    for (int column = MatchUnitModel::Unit; column < MatchUnitModel::Value; ++column)
        resizeColumnToContents(column);
    fitValueColumn();
    viewport()->update();
}

void UnitTable::resizeEvent(QResizeEvent *event)
{
    QTableView::resizeEvent(event);
    fitValueColumn();
}

void UnitTable::focusInEvent(QFocusEvent *event)
{
    const bool isByKey =
        event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    if (isByKey && !selectionModel()->hasSelection())
        selectCurrentRow();
    QTableView::focusInEvent(event);
}

void UnitTable::selectCurrentRow()
{
    const QModelIndex current = currentIndex();
    const QModelIndex row = current.isValid() ? current : model()->index(0, MatchUnitModel::Unit);
    selectionModel()->setCurrentIndex(row, QItemSelectionModel::ClearAndSelect |
                                               QItemSelectionModel::Rows);
}

void UnitTable::fitValueColumn()
{
    int others = 0;
    for (int column = MatchUnitModel::Unit; column < MatchUnitModel::Value; ++column)
        others += columnWidth(column);
    setColumnWidth(MatchUnitModel::Value,
                   std::max(kValueColumnWidth, viewport()->width() - others));
}

} // namespace KEO
