#include "unitdelegate.h"

#include "matchunitmodel.h"

#include <config/coreconfig.h>
#include <widgets/plaintip.h>

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QToolTip>

namespace KEO {

void UnitDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    const MatchUnit *unit = MatchUnitModel::unitOfIndex(index);
    if (unit && index.column() == MatchUnitModel::Counter && unit->counter_enable &&
        unit->countinuous)
        option->text = tr("%1, continuous").arg(option->text);
}

bool UnitDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view,
                             const QStyleOptionViewItem &option, const QModelIndex &index)
{
    if (event->type() != QEvent::ToolTip || !index.isValid())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    // Half of a cell may be out of sight as well.
    const QRect seen = option.rect & view->viewport()->rect();
    QStyleOptionViewItem shown = option;
    initStyleOption(&shown, index);
    if (sizeHint(option, index).width() > seen.width())
        QToolTip::showText(event->globalPos(), plainTip(shown.text), view->viewport(), option.rect);
    else
        QToolTip::hideText();
    return true;
}

} // namespace KEO
