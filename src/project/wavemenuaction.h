#pragma once

#include <QAction>
#include <QList>
#include <QPointer>

class QWidget;

namespace WaveMonitor {
class WaveMonitorWidget;
} // namespace WaveMonitor

namespace KEO {

/// An entry of the menus of all waves of a project, whose key works throughout its window.
class WaveMenuAction final : public QAction
{
    Q_OBJECT

public:
    enum class Menus { Waves, WavesAndNames };

    WaveMenuAction(const QString &text, const QKeySequence &key, Menus menus, QObject *parent);

    /// \a window may be null, and is borrowed.
    void enter(QWidget *window);
    void leave();
    /// Adds itself to those of \a monitors that do not have it yet.
    void offer(const QList<WaveMonitor::WaveMonitorWidget *> &monitors);

private:
    const Menus m_menus;
    QPointer<QWidget> m_window;
    QList<QPointer<WaveMonitor::WaveMonitorWidget>> m_offered;
};

} // namespace KEO
