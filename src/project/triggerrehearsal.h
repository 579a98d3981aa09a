#pragma once

#include "projectparts.h"

#include <capture/portsamples.h>

#include <QObject>
#include <QPointer>

#include <optional>
#include <vector>

class QAction;
class QTabWidget;
class QWidget;

namespace WaveMonitor {
class WaveMonitorWidget;
} // namespace WaveMonitor

namespace KEO {

/// Rehearse Trigger: shows above the waves when a core would trigger as the page sets it now, in
/// each window of a standard core, and follows both. Only the window in front is evaluated at once,
/// any other one when it comes up. Nothing of this is part of the capture.
class TriggerRehearsal final : public QObject
{
    Q_OBJECT

public:
    TriggerRehearsal(const ProjectParts &parts, QObject *parent);

    /// Puts the action into \a page and \a window, which may be null, as may \a tabs. All are
    /// borrowed.
    void enter(QWidget &page, QWidget *window, QTabWidget *tabs);
    /// Takes it out of the window again, switched off.
    void leave();
    [[nodiscard]] bool isOn() const;
    /// Does nothing to a kind of core that has no trigger.
    void setOn(bool isOn);

public Q_SLOTS:
    /// There are other windows, or other samples in one.
    void followWindows();

private:
    using Monitor = WaveMonitor::WaveMonitorWidget;

    struct Window
    {
        QPointer<Monitor> monitor;
        std::optional<PortSamples> ports; ///< nothing until they are looked at
        bool isUpToDate = false;
    };

    void followSettings();
    void toggle(bool isOn);
    void tellState();
    void refresh();
    void rehearse(Window &window);
    Window &offer(Monitor &monitor);

    const ProjectParts m_parts;
    QAction *m_action;        // child
    QAction *m_separator;     // child, before it in the waves' menus
    QAction *m_pageSeparator; // child
    QPointer<QWidget> m_mainWindow;
    QPointer<QTabWidget> m_tabs;
    std::vector<Window> m_windows; ///< those that have the action
};

} // namespace KEO
