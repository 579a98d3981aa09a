#include "popupmenu.h"

#include <QMenu>
#include <QPointer>

namespace WaveMonitor {

QAction *runMenu(QWidget *parent, const QList<QAction *> &actions, const QPoint &globalPosition)
{
    if (actions.isEmpty())
        return nullptr; // an empty menu would show as a sliver
    // On the heap, because a parent that dies meanwhile takes the menu along.
    const QPointer<QMenu> menu = new QMenu(parent);
    menu->addActions(actions);
    menu->setToolTipsVisible(true); // of entries that have one of their own
    QAction *chosen = menu->exec(globalPosition);
    if (!menu)
        return nullptr;
    delete menu;
    return chosen;
}

} // namespace WaveMonitor
