#include "runcontrol.h"

#include "configpage.h"
#include "programmerlink.h"
#include "projectboxes.h"
#include "statusline.h"
#include "waitingtip.h"
#include "wavetabs.h"

#include <design/design.h>
#include <link/jtagsession.h>
#include <wave/wavemonitorwidget.h>

#include <QPointer>
#include <QWidget>

namespace KEO {

using WaveMonitor::WaveMonitorWidget;

void keepSignalNames(const ProjectParts &parts)
{
    for (const WaveMonitorWidget *wave : parts.waves.monitors()) {
        QMap<int, SignalNames> names; // by flat position
        const QMap<int, WaveMonitor::SignalElement> elements = wave->signalMap();
        for (auto element = elements.begin(); element != elements.end(); ++element)
            names.insert(element.key(), {element->name, element->text});
        parts.design.keepNames(wave->coreNumber(), names);
    }
}

void RunControl::start(RunKind kind, const QString &cable)
{
    const auto &[design, page, programmer, waves, boxes, status] = m_parts;
    const QPointer<RunControl> self(this);
    if (design.isBusy() || !programmer.mayCapture(boxes.window()) || !self)
        return;
    if (design.isBusy() || !waves.isInWindow()) // a box may have shown
        return;
    if (!design.session().selectCable(cable)) {
        boxes.showError(noServerText());
        return;
    }
    m_focusBefore = boxes.window() ? boxes.window()->focusWidget() : nullptr;
    WaitingTip::show(boxes.window());
    design.manager().openDevice(programmer.deviceChain());
    Q_EMIT wavesGoing();
    keepWaves();
    page.saveSettings();
    const QString doubt = design.deviceDoubt(design.deviceOfRun(programmer.targetName()));
    if (!doubt.isEmpty())
        status.tell(doubt);
    if (kind == RunKind::Auto)
        design.manager().setAutorun(0);
    design.start();
    if (self)
        Q_EMIT changed();
}

void RunControl::keepWaves()
{
    keepSignalNames(m_parts);
    m_parts.waves.clear(WaveTabs::Layouts::Keep);
}

void RunControl::show(int core, int window)
{
    const auto &[design, page, programmer, waves, boxes, status] = m_parts;
    const QPointer<RunControl> self(this);
    // Taking the window lets the run go on, so it happens once, whatever comes of it.
    const auto captured = design.take(core, window, programmer.targetName());
    if (!self || !captured || !waves.isInWindow()) // a lite run may outlive its window
        return;
    if (captured->elements.isEmpty()) {
        boxes.showError(kindText(design.traits().noData, {core, window}));
        return;
    }
    const int rounds = design.manager().autorun();
    if (rounds != -1)
        WaitingTip::close();
    waves.show(*captured, rounds); // may see this gone
    if (self)
        Q_EMIT shown();
}

void RunControl::complete(int resultID)
{
    const QPointer<RunControl> self(this);
    WaitingTip::close();
    Q_EMIT changed();
    if (self)
        giveFocusBack();
    const QString text = self ? deviceErrorText(m_parts.design.traits(), resultID) : QString();
    if (!text.isEmpty())
        m_parts.boxes.showError(text);
    if (self)
        m_parts.programmer.applyPending();
}

/// The tip gives the focus to the window, and the page is off in a run. Waves that came, or the
/// user, have moved it since.
void RunControl::giveFocusBack()
{
    const QWidget *window = m_parts.boxes.window();
    const QWidget *focus = window ? window->focusWidget() : nullptr;
    if (m_focusBefore && m_focusBefore->isVisible() && (!focus || focus == window))
        m_focusBefore->setFocus(Qt::OtherFocusReason);
    m_focusBefore.clear();
}

void RunControl::stop()
{
    const QPointer<RunControl> self(this);
    m_parts.design.manager().stop();
    if (self)
        Q_EMIT changed();
    if (self)
        m_parts.boxes.showInformation(kindText(m_parts.design.traits().stopped));
}

void RunControl::forceTrigger()
{
    const QPointer<RunControl> self(this);
    m_parts.design.forceTrigger();
    if (self)
        Q_EMIT changed();
    if (self)
        m_parts.boxes.showInformation(kindText(m_parts.design.traits().forced));
}

} // namespace KEO
