#pragma once

#include <QList>

class QAction;
class QPoint;
class QWidget;

namespace WaveMonitor {

/// Shows a context menu of \a actions over \a parent and gives the chosen one; null when none was
/// chosen, there are none, or \a parent died while the menu was open.
QAction *runMenu(QWidget *parent, const QList<QAction *> &actions, const QPoint &globalPosition);

} // namespace WaveMonitor
