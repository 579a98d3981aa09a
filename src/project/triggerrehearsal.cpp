#include "triggerrehearsal.h"

#include "configpage.h"
#include "statusline.h"
#include "wavetabs.h"

#include <design/design.h>
#include <design/rehearsal.h>
#include <design/rehearsalrows.h>
#include <wave/wavemonitorwidget.h>

#include <QAction>
#include <QKeySequence>
#include <QTabWidget>

#include <algorithm>

namespace KEO {

using WaveMonitor::AidRows;
using WaveMonitor::WaveMonitorWidget;

namespace {

QAction *newSeparator(QObject *parent)
{
    auto *separator = new QAction(parent);
    separator->setSeparator(true);
    return separator;
}

} // namespace

TriggerRehearsal::TriggerRehearsal(const ProjectParts &parts, QObject *parent)
    : QObject(parent),
      m_parts(parts),
      m_action(new QAction(tr("Rehearse Trigger"), this)),
      m_separator(newSeparator(this)),
      m_pageSeparator(newSeparator(this))
{
    const bool hasTrigger = parts.design.traits().kind != DescriptionKind::Lite;
    m_action->setObjectName(QStringLiteral("rehearseAction"));
    m_action->setCheckable(true);
    m_action->setShortcut(Qt::CTRL | Qt::Key_R);
    m_action->setShortcutVisibleInContextMenu(true);
    m_action->setEnabled(hasTrigger);
    m_action->setToolTip(hasTrigger ? tr("Shows above the waves when the core would trigger as it "
                                         "is set now")
                                    : tr("A lite core has no trigger to rehearse"));
    connect(m_action, &QAction::toggled, this, &TriggerRehearsal::toggle);
    connect(m_action, &QAction::triggered, this, &TriggerRehearsal::tellState);
    connect(&parts.page, &ConfigPage::edited, this, &TriggerRehearsal::followSettings);
}

void TriggerRehearsal::enter(QWidget &page, QWidget *window, QTabWidget *tabs)
{
    page.addActions({m_pageSeparator, m_action});
    m_mainWindow = window;
    if (window)
        window->addAction(m_action);
    m_tabs = tabs;
    if (tabs)
        connect(tabs, &QTabWidget::currentChanged, this, &TriggerRehearsal::refresh);
}

void TriggerRehearsal::leave()
{
    m_action->setChecked(false);
    m_windows.clear();
    if (m_mainWindow)
        m_mainWindow->removeAction(m_action);
    if (m_tabs)
        m_tabs->disconnect(this);
    m_tabs = nullptr;
}

bool TriggerRehearsal::isOn() const
{
    return m_action->isChecked();
}

void TriggerRehearsal::setOn(bool isOn)
{
    if (m_action->isEnabled())
        m_action->setChecked(isOn);
}

void TriggerRehearsal::followWindows()
{
    std::erase_if(m_windows, [](const Window &window) { return !window.monitor; });
    for (Window &window : m_windows)
        window = {window.monitor, std::nullopt, false};
    for (WaveMonitorWidget *monitor : m_parts.waves.monitors())
        offer(*monitor);
    refresh();
}

void TriggerRehearsal::followSettings()
{
    for (Window &window : m_windows)
        window.isUpToDate = false;
    refresh();
}

void TriggerRehearsal::toggle(bool isOn)
{
    if (isOn) {
        followSettings();
        return;
    }
    for (Window &window : m_windows) {
        window = {window.monitor, std::nullopt, false}; // lets go of the samples
        if (window.monitor)
            window.monitor->hideAidRows();
    }
}

/// The page may be in front, or there are no waves yet.
void TriggerRehearsal::tellState()
{
    if (!m_action->isChecked())
        m_parts.status.tell(tr("The trigger is no longer rehearsed."));
    else if (m_parts.waves.isEmpty())
        m_parts.status.tell(tr("The trigger is rehearsed as soon as there are waves."));
    else
        m_parts.status.tell(tr("The trigger is rehearsed above the waves."));
}

/// A monitor that is new here gets the action.
TriggerRehearsal::Window &TriggerRehearsal::offer(Monitor &monitor)
{
    const auto known = std::ranges::find_if(
        m_windows, [&](const Window &window) { return window.monitor == &monitor; });
    if (known != m_windows.end())
        return *known;
    monitor.addWaveAction(m_separator);
    monitor.addWaveAction(m_action);
    return m_windows.emplace_back(Window{&monitor, std::nullopt, false});
}

void TriggerRehearsal::refresh()
{
    WaveMonitorWidget *front = m_action->isChecked() ? m_parts.waves.current() : nullptr;
    if (!front)
        return;
    Window &window = offer(*front);
    if (!window.isUpToDate)
        rehearse(window);
    window.isUpToDate = true;
}

void TriggerRehearsal::rehearse(Window &window)
{
    WaveMonitorWidget &monitor = *window.monitor;
    const CoreConfig *core = m_parts.design.triggerCore(monitor.coreNumber());
    if (!core) {
        monitor.hideAidRows();
        return;
    }
    if (!window.ports)
        window.ports = portSamplesOf(*core, monitor.contents());
    AidRows rows;
    m_parts.page.withSettings(
        [&] { rows = rehearsalRows(*core, *window.ports, KEO::rehearse(*core, *window.ports)); });
    monitor.showAidRows(rows);
}

} // namespace KEO
