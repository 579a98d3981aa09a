#include "wavemenuaction.h"

#include <wave/wavemonitorwidget.h>

namespace KEO {

WaveMenuAction::WaveMenuAction(const QString &text, const QKeySequence &key, Menus menus,
                               QObject *parent)
    : QAction(text, parent), m_menus(menus)
{
    setShortcut(key);
    setShortcutVisibleInContextMenu(true);
}

void WaveMenuAction::enter(QWidget *window)
{
    m_window = window;
    if (window)
        window->addAction(this);
}

void WaveMenuAction::leave()
{
    if (m_window)
        m_window->removeAction(this);
    m_window = nullptr;
}

void WaveMenuAction::offer(const QList<WaveMonitor::WaveMonitorWidget *> &monitors)
{
    m_offered.removeIf([](const auto &monitor) { return !monitor; });
    for (WaveMonitor::WaveMonitorWidget *monitor : monitors) {
        if (m_offered.contains(monitor))
            continue;
        m_offered.append(monitor);
        monitor->addWaveAction(this);
        if (m_menus == Menus::WavesAndNames)
            monitor->addNameAction(this);
    }
}

} // namespace KEO
