#include "expressionlist.h"

#include <QMouseEvent>
#include <QStyle>
#include <QStyleOptionViewItem>

namespace KEO {

void ExpressionList::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (!isOnCheckBox(event->position().toPoint())) {
        QListWidget::mouseDoubleClickEvent(event);
        return;
    }
    QMouseEvent press(QEvent::MouseButtonPress, event->position(), event->scenePosition(),
                      event->globalPosition(), event->button(), event->buttons(),
                      event->modifiers());
    mousePressEvent(&press);
}

bool ExpressionList::isOnCheckBox(const QPoint &place) const
{
    const QModelIndex index = indexAt(place);
    if (!index.data(Qt::CheckStateRole).isValid())
        return false;
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    option.rect = visualRect(index);
    option.features |= QStyleOptionViewItem::HasCheckIndicator;
    option.text = index.data().toString();
    option.features |= QStyleOptionViewItem::HasDisplay;
    return style()
        ->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, this)
        .contains(place);
}

} // namespace KEO
