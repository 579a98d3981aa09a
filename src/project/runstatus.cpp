#include "runstatus.h"

#include "statusline.h"

#include <capture/capturemanager.h>
#include <design/design.h>

#include <QLocale>

namespace KEO {

namespace {

QString shown(QTime time)
{
    return QLocale().toString(time, QStringLiteral("HH:mm:ss"));
}

} // namespace

RunStatus::RunStatus(Design &design, StatusLine &line, QObject *parent)
    : QObject(parent), m_design(design), m_line(line)
{
    const CaptureManager &manager = design.manager();
    connect(&manager, &CaptureManager::statusChanged, this, &RunStatus::followState);
    connect(&manager, &CaptureManager::sectionRead, this, &RunStatus::showReading);
    connect(&manager, &CaptureManager::triggerComplete, this, &RunStatus::takeEnd);
    connect(&manager, &CaptureManager::reportChanged, this, [this] {
        if (!m_text.isEmpty())
            show(m_text);
    });
}

void RunStatus::clear()
{
    if (m_isRunning)
        return;
    m_text.clear();
    m_end.clear();
    m_line.showRun(tr("Ready"));
}

void RunStatus::show(const QString &text)
{
    m_text = text;
    const QString report = m_design.manager().report().text();
    m_line.showRun(report.isEmpty() ? text : tr("%1. %2").arg(text, report));
}

void RunStatus::followState(bool isBusy)
{
    if (!isBusy)
        return; // the end tells it
    const int round = m_design.manager().autorun();
    if (!m_isRunning)
        m_windows = 0;
    if (!m_isRunning || round != m_round) {
        m_since = QTime::currentTime();
        m_round = round;
    }
    m_isRunning = true;
    m_end.clear();
    const QString waitedFor = m_design.waitingFor();
    const CaptureState state = m_design.manager().state();
    if (state != CaptureState::Reading && state != CaptureState::ReadComplete)
        show(withRound(waitedFor.isEmpty()
                           ? tr("Running since %1").arg(shown(m_since))
                           : tr("Waiting for %1 since %2").arg(waitedFor, shown(m_since))));
}

void RunStatus::showReading(int core, int window, int sectionsRead, int sections)
{
    show(withRound(tr("Reading core %1 window %2: %3 of %4 sections")
                       .arg(QString::number(core), QString::number(window),
                            QString::number(sectionsRead), QString::number(sections))));
}

/// Taking the last window of a lite core ends the run, before it shows.
void RunStatus::countWindow()
{
    ++m_windows;
    if (!m_end.isEmpty())
        showEnd();
}

void RunStatus::takeEnd(int resultID)
{
    const QString reason = deviceErrorText(m_design.traits(), resultID);
    if (!m_isRunning && reason.isEmpty())
        return; // closing a project ends what was no run
    m_isRunning = false;
    const QString end = tr("Run ended at %1").arg(shown(QTime::currentTime()));
    if (!reason.isEmpty()) {
        show(tr("%1: %2").arg(end, reason));
        return;
    }
    m_end = end;
    showEnd();
}

void RunStatus::showEnd()
{
    show(tr("%1, windows captured: %2").arg(m_end, QString::number(m_windows)));
}

QString RunStatus::withRound(const QString &text) const
{
    return m_round < 0 ? text : tr("%1 (round %2)").arg(text).arg(m_round + 1);
}

} // namespace KEO
