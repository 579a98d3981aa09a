#pragma once

#include <QStyledItemDelegate>

namespace KEO {

/// Shows the cells of a MatchUnitModel: a count says whether it is continuous, and a text that is
/// cut off shows whole in a tool tip.
class UnitDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
};

} // namespace KEO
