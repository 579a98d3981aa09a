#include "capturerun.h"

#include "designsetup.h"
#include "interruption.h"
#include "windowexport.h"

#include <link/jtagsession.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QTimer>

#include <utility>

namespace KEO {

namespace {

// How often the program looks whether the server is still there.
constexpr int kLinkCheckInterval = 500;
// For the server to take what the end of a run has sent.
constexpr int kLeaveTime = 1000;

/// The sentences of this program, which name core, window and result for every kind of core.
const KindTraits &words()
{
    return kindTraits(DescriptionKind::Standard);
}

} // namespace

CaptureRun::CaptureRun(const CaptureOptions &options, WindowExport &windows, ResultOutput &output,
                       ProgressReport &report)
    : m_options(options),
      m_exports(windows),
      m_output(output),
      m_report(report),
      m_cables(options),
      m_design(makeDesign(options)),
      m_manager(m_design->manager()),
      m_forceTimer(new QTimer(this)),
      m_timeoutTimer(new QTimer(this)),
      m_linkTimer(new QTimer(this))
{
    CapturePace pace = kEagerPace;
    pace.sectionPause = m_options.pace;
    m_manager.setPace(pace);
    m_forceTimer->setSingleShot(true);
    m_timeoutTimer->setSingleShot(true);
    connect(m_forceTimer, &QTimer::timeout, this, [this] {
        m_report.say(tr("Forcing the trigger."));
        m_design->forceTrigger();
    });
    connect(m_timeoutTimer, &QTimer::timeout, this, [this] {
        end(ExitStatus::TimedOut, tr("Timed out while waiting for %1.").arg(waitingFor()));
    });
    connect(m_linkTimer, &QTimer::timeout, this, [this] {
        if (!m_design->session().isCurrentConnected())
            end(ExitStatus::NoServer, tr("The server of %1 went away.").arg(m_cable));
    });
    connect(m_design.get(), &Design::captured, this, &CaptureRun::onCaptured);
    connect(&m_manager, &CaptureManager::sectionRead, this, &CaptureRun::onSectionRead);
    connect(&m_manager, &CaptureManager::reportChanged, this, &CaptureRun::onReportChanged);
    connect(&m_manager, &CaptureManager::triggerComplete, this, &CaptureRun::onTriggerComplete);
}

TaskResult CaptureRun::run()
{
    Interruption interruption;
    if (const std::optional<Error> error = prepare())
        end(statusOf(error->kind), error->message);
    else
        reachCable();
    if (!m_ended) {
        connect(&interruption, &Interruption::interrupted, this, [this] {
            end(Interruption::pending().value_or(ExitStatus::Interrupted),
                kindText(words().stopped));
        });
        QTimer::singleShot(0, this, &CaptureRun::start);
        QCoreApplication::exec();
    }
    leaveServer();
    m_result.document = {
        {"file", m_options.file}, {"captures", m_exports.captures()}, {"cable", m_cable}};
    if (m_projectSaved)
        m_result.document.insert("project", m_options.project);
    return m_result;
}

std::optional<Error> CaptureRun::prepare()
{
    if (const std::optional<Error> error = setUp(*m_design, m_options))
        return error;
    if (const std::optional<Error> error = m_exports.prepare(m_design->windowCount()))
        return error;
    if (!m_options.project.isEmpty()) {
        const Result<QString> directory = prepareDirectory(QFileInfo(m_options.project).path());
        if (!directory)
            return directory.error();
    }
    // Last: it takes the place of an earlier one.
    if (!m_options.transcript.isEmpty())
        return m_design->session().startTranscript(m_options.transcript);
    return {};
}

void CaptureRun::reachCable()
{
    const Result<QString> cable = m_cables.reach(m_options.cable);
    if (const std::optional<ExitStatus> status = Interruption::pending()) {
        end(*status, kindText(words().stopped));
    } else if (!cable) {
        end(statusOf(cable.error().kind), cable.error().message);
    } else {
        m_cable = *cable;
        if (!m_design->session().selectCable(m_cable))
            end(ExitStatus::NoServer, noServerText());
    }
}

void CaptureRun::start()
{
    m_windows = m_design->windowCount();
    m_windowsLeft = m_windows;
    QVariantList chain;
    for (const int code : m_options.chain)
        chain.append(code);
    m_manager.openDevice(chain);
    if (isAuto())
        m_manager.setAutorun(0);
    m_linkTimer->start(kLinkCheckInterval);
    if (m_options.timeout)
        m_timeoutTimer->start(int(*m_options.timeout));
    warnOfDevice(*m_design, m_options, m_report);
    m_design->start();
    rearmTimers();
}

void CaptureRun::rearmTimers()
{
    if (m_ended)
        return;
    if (m_options.forceAfter)
        m_forceTimer->start(int(*m_options.forceAfter));
    m_report.waitFor(waitingFor());
}

QString CaptureRun::waitingFor() const
{
    const QString round =
        isAuto() ? tr(", round %1 of %2")
                       .arg(QString::number(m_round + 1), QString::number(*m_options.autoRounds))
                 : QString();
    const QString cores = m_design->waitingFor();
    return tr("%1 on %2%3").arg(cores.isEmpty() ? tr("the samples") : cores, m_cable, round);
}

void CaptureRun::onSectionRead(int core, int window, int sectionsRead, int sections)
{
    m_forceTimer->stop();
    m_report.readSections(
        tr("core %1 window %2").arg(QString::number(core), QString::number(window)), sectionsRead,
        sections);
}

/// Told on the spot; what concerns the samples decides the status at the end as well.
void CaptureRun::onReportChanged()
{
    const RunReport &report = m_manager.report();
    const bool isSilent = report.server == RunReport::Server::Silent;
    if (isSilent == std::exchange(m_isSilent, isSilent) || m_ended)
        return;
    m_report.say(isSilent ? report.text() : tr("The cable server answers again."));
    m_report.waitFor(waitingFor());
}

void CaptureRun::onCaptured(int core, int window)
{
    // Taking the window lets the run go on, so it happens once, whatever comes of it.
    const std::optional<CapturedWindow> captured = m_design->take(core, window, m_options.device);
    if (m_ended)
        return;
    if (!captured || captured->elements.isEmpty()) {
        end(ExitStatus::Refused, kindText(words().noData, {core, window}));
        return;
    }
    ++m_round;
    if (!m_options.project.isEmpty())
        keepForProject(*captured);
    const std::optional<Error> error = write(*captured, core);
    if (error && m_exportFault.isEmpty())
        m_exportFault = error->message;
    // A project is still worth the rest of the run, but no further round.
    if (error && (m_options.project.isEmpty() || isAuto())) {
        endWithProject();
        return;
    }

    if (!isAuto()) {
        --m_windowsLeft;
        if (m_windowsLeft > 0 && m_manager.state() == CaptureState::ReadComplete)
            rearmTimers();
        return;
    }
    if (m_round == *m_options.autoRounds)
        endWithProject();
    else
        rearmTimers();
}

std::optional<Error> CaptureRun::write(const CapturedWindow &captured, int core)
{
    const CaptureLabel label{core, captured.window, isAuto() ? m_round : 0,
                             m_design->traits().exportMode};
    return m_exports.write(label, captured.core, captured.contents(), m_windows == 1 && !isAuto());
}

void CaptureRun::keepForProject(const CapturedWindow &captured)
{
    if (isAuto())
        m_kept.captures.clear(); // the last round counts
    m_kept.kind = m_design->traits().kind;
    m_kept.captures.push_back({captured.core, captured.window, captured.contents()});
}

/// What there is to save is there. A failed export does not keep it from being saved.
void CaptureRun::endWithProject()
{
    if (m_ended)
        return;
    if (!m_manager.report().doubtful.isEmpty()) {
        end(ExitStatus::Refused, m_manager.report().text());
        return;
    }
    QStringList faults;
    if (!m_exportFault.isEmpty())
        faults.append(m_exportFault);
    if (!m_options.project.isEmpty()) {
        const Result<QString> saved = saveProject(m_options.project, m_options.file, m_kept);
        m_projectSaved = bool(saved);
        m_report.finish();
        if (!saved) {
            faults.append(saved.error().message);
        } else {
            m_output.line(m_options.project);
            m_output.line(*saved);
        }
    }
    end(faults.isEmpty() ? ExitStatus::Captured : ExitStatus::FileError,
        faults.join(QStringLiteral("; ")));
}

void CaptureRun::onTriggerComplete(int resultId)
{
    if (resultId != 0)
        end(ExitStatus::Refused, deviceErrorText(words(), resultId));
    else if (m_windowsLeft == 0)
        endWithProject();
    else
        // A device that did not open ends the run first and gives the reason right after.
        QTimer::singleShot(0, this, &CaptureRun::endIfIncomplete);
}

void CaptureRun::endIfIncomplete()
{
    end(ExitStatus::Refused, tr("The capture ended before all samples had arrived. %1")
                                 .arg(m_manager.report().text())
                                 .trimmed());
}

void CaptureRun::end(ExitStatus status, const QString &message)
{
    if (m_ended)
        return;
    m_ended = true;
    m_result.status = status;
    m_result.message = message;
    m_forceTimer->stop();
    m_timeoutTimer->stop();
    m_linkTimer->stop();
    m_report.finish();
    if (m_manager.state() != CaptureState::Idle)
        m_manager.stop(); // disarms the cores and closes the device
    QCoreApplication::quit();
}

/// The cores are disarmed and the device is closed only once the server has read so; one that this
/// program has started would be ended before. Another signal ends all waiting.
void CaptureRun::leaveServer()
{
    const auto isGivenUp = [count = Interruption::count()] {
        return Interruption::count() > count;
    };
    m_design->session().endConnection(kLeaveTime, isGivenUp);
    m_cables.endServers(isGivenUp);
}

} // namespace KEO
