#include "captureprogram.h"

#include "interruption.h"
#include "projectcomparison.h"

#include <base/console.h>
#include <capture/registerpreview.h>
#include <design/recoverystore.h>
#include <link/jtagsession.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonDocument>
#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

namespace KEO {

namespace {

// How often the program looks whether the server is still there.
constexpr int kLinkCheckInterval = 500;

ExitStatus statusOf(Error::Kind kind)
{
    switch (kind) {
    case Error::Usage:
        return ExitStatus::Usage;
    case Error::Link:
        return ExitStatus::NoServer;
    case Error::File:
    case Error::Format:
    case Error::Limit:
        break;
    }
    return ExitStatus::FileError;
}

DescriptionKind kindOf(const CaptureOptions &options)
{
    return options.task == CaptureOptions::Task::Capture ? descriptionKind(options.file)
                                                         : DescriptionKind::Unknown;
}

/// The sentences of this program, which name core, window and result for every kind of core.
const KindTraits &words()
{
    return kindTraits(DescriptionKind::Standard);
}

QJsonObject jsonOf(int core, const TriggerFinding &finding)
{
    QJsonObject object{{"core", core},
                       {"obstacle", finding.weight == TriggerFinding::Weight::Obstacle},
                       {"text", finding.text}};
    if (finding.subject == TriggerFinding::Subject::Unit)
        object.insert("unit", finding.index);
    else if (finding.subject == TriggerFinding::Subject::Expression)
        object.insert("expression", finding.index);
    return object;
}

} // namespace

CaptureProgram::CaptureProgram(CaptureOptions options, PictureWriter drawPicture, QObject *parent)
    : QObject(parent),
      m_options(std::move(options)),
      m_drawPicture(std::move(drawPicture)),
      m_report(ProgressReport::styleFor(m_options.quiet)),
      m_session(*JtagSession::instance()),
      m_design(Design::make(kindOf(m_options), m_session)),
      m_manager(m_design->manager()),
      m_forceTimer(new QTimer(this)),
      m_timeoutTimer(new QTimer(this)),
      m_linkTimer(new QTimer(this))
{
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
        if (!m_session.isCurrentConnected())
            end(ExitStatus::NoServer, tr("The server of %1 went away.").arg(m_cable));
    });
    connect(m_design.get(), &Design::captured, this, &CaptureProgram::onCaptured);
    connect(&m_manager, &CaptureManager::sectionRead, this, &CaptureProgram::onSectionRead);
    connect(&m_manager, &CaptureManager::reportChanged, this, &CaptureProgram::onReportChanged);
    connect(&m_manager, &CaptureManager::triggerComplete, this, &CaptureProgram::onTriggerComplete);
}

ExitStatus CaptureProgram::run()
{
    switch (m_options.task) {
    case CaptureOptions::Task::ShowHelp:
        print(m_options.helpText);
        return statusAfterPrinting();
    case CaptureOptions::Task::ShowVersion:
        print(QStringLiteral("signalscope-capture " SIGNALSCOPE_VERSION));
        return statusAfterPrinting();
    case CaptureOptions::Task::ListCables:
        m_status = listCables();
        break;
    case CaptureOptions::Task::ListRecovery:
        m_status = listRecovery();
        break;
    case CaptureOptions::Task::Capture:
        m_status = capture();
        break;
    case CaptureOptions::Task::ExportSaved:
        m_status = exportSaved();
        break;
    case CaptureOptions::Task::Compare:
        m_status = compareSaved();
        break;
    }
    m_report.finish();
    if (!m_message.isEmpty())
        printMessage();
    if (m_options.json && m_options.task != CaptureOptions::Task::ListCables &&
        m_options.task != CaptureOptions::Task::ListRecovery)
        printJson();
    m_session.disconnectAll();
    return statusAfterPrinting();
}

void CaptureProgram::print(const QString &line)
{
    if (!writeText(stdout, line + u'\n') && m_printFault.isEmpty())
        m_printFault = qt_error_string(errno);
}

void CaptureProgram::printMessage() const
{
    static_cast<void>(
        writeText(stderr, QStringLiteral("signalscope-capture: %1\n").arg(m_message)));
}

/// A script that gets no result, or half of one, must not take the run for a good one.
ExitStatus CaptureProgram::statusAfterPrinting()
{
    const bool isResult = m_status == ExitStatus::Captured || m_status == ExitStatus::Different;
    if (m_printFault.isEmpty() || !isResult)
        return m_status;
    m_message = tr("The result can not be printed: %1").arg(m_printFault);
    printMessage();
    return ExitStatus::FileError;
}

ExitStatus CaptureProgram::listCables()
{
    const QStringList cables = m_cables.reachAll();
    if (m_options.json) {
        const QJsonObject document{{"cables", QJsonArray::fromStringList(cables)}};
        print(QString::fromUtf8(QJsonDocument(document).toJson()).trimmed());
    } else {
        for (const QString &cable : cables)
            print(cable);
    }
    if (!cables.isEmpty())
        return ExitStatus::Captured;
    m_message = tr("No cable server could be started or reached.");
    return ExitStatus::NoServer;
}

ExitStatus CaptureProgram::listRecovery()
{
    QJsonArray captures;
    int number = 0;
    for (const Recovery &entry : RecoveryStore().entries()) {
        const QString name = QStringLiteral("recovery:%1").arg(++number);
        if (!m_options.json) {
            print(QStringList{name, entry.time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")),
                              entry.description, entry.windowText()}
                      .join(u'\t'));
        }
        QJsonArray windows;
        for (const WindowPlace &place : entry.windows)
            windows.append(QJsonObject{{"core", place.core}, {"window", place.window}});
        captures.append(QJsonObject{{"open", name},
                                    {"time", entry.time.toUTC().toString(Qt::ISODate)},
                                    {"description", entry.description},
                                    {"project", entry.project},
                                    {"windows", windows}});
    }
    if (m_options.json)
        print(QString::fromUtf8(QJsonDocument(QJsonObject{{"recovery", captures}}).toJson())
                  .trimmed());
    return ExitStatus::Captured;
}

ExitStatus CaptureProgram::capture()
{
    const auto fail = [this](const Error &error) {
        m_message = error.message;
        return statusOf(error.kind);
    };
    if (const std::optional<Error> error = prepare())
        return fail(*error);
    warnOfMissingDevice();
    if (m_options.dryRun) {
        previewRun();
        return ExitStatus::Captured;
    }
    if (!m_options.formats.isEmpty()) {
        const Result<QString> directory = prepareDirectory(m_options.directory);
        if (!directory)
            return fail(directory.error());
    }
    if (!m_options.project.isEmpty()) {
        const Result<QString> directory = prepareDirectory(QFileInfo(m_options.project).path());
        if (!directory)
            return fail(directory.error());
    }

    Interruption interruption;
    const Result<QString> cable = m_cables.reach(m_options.cable);
    if (const std::optional<ExitStatus> status = Interruption::pending()) {
        m_message = kindText(words().stopped);
        return *status;
    }
    if (!cable)
        return fail(cable.error());
    m_cable = *cable;
    if (!m_session.selectCable(m_cable))
        return fail({Error::Link, noServerText()});

    connect(&interruption, &Interruption::interrupted, this, [this] {
        end(Interruption::pending().value_or(ExitStatus::Interrupted), kindText(words().stopped));
    });
    QTimer::singleShot(0, this, &CaptureProgram::startCapture);
    QCoreApplication::exec();
    return m_status;
}

void CaptureProgram::previewRun()
{
    const QList<QBitArray> words = m_design->startWords();
    const QList<RegisterPreviewLine> lines = previewOf(words);
    QJsonArray findings;
    for (const auto &[core, finding] : m_design->findings()) {
        m_report.say(tr("Core %1: %2").arg(QString::number(core), finding.text));
        findings.append(jsonOf(core, finding));
    }
    if (m_options.json)
        m_preview = {
            {"words", words.size()}, {"registers", previewJson(lines)}, {"findings", findings}};
    else
        print(previewText(lines));
}

ExitStatus CaptureProgram::exportSaved()
{
    const auto fail = [this](const Error &error) {
        m_message = error.message;
        return statusOf(error.kind);
    };
    Result<SavedProject> project = openProject(m_options.file);
    if (!project)
        return fail(project.error());
    const auto isWanted = [this](const SavedCapture &capture) {
        return m_options.cores.isEmpty() || m_options.cores.contains(capture.core.index);
    };
    m_windows = int(std::ranges::count_if(project->captures, isWanted));
    if (m_windows == 0)
        return fail({Error::Usage, tr("The project has no waves of these cores.")});
    const Result<QString> directory = prepareDirectory(m_options.directory);
    if (!directory)
        return fail(directory.error());
    for (SavedCapture &capture : project->captures) {
        if (!isWanted(capture))
            continue;
        const CaptureLabel label{capture.core.index, capture.window, 0,
                                 kindTraits(project->kind).exportMode};
        const qsizetype samples = capture.contents.maxDataLength();
        const Result<QStringList> written =
            writeFiles(label, capture.core, std::move(capture.contents), m_windows == 1);
        if (!written)
            return fail(written.error());
        reportCapture(label, capture.core, samples, *written);
    }
    return ExitStatus::Captured;
}

ExitStatus CaptureProgram::compareSaved()
{
    const auto fail = [this](const Error &error) {
        m_message = error.message;
        return statusOf(error.kind);
    };
    const Result<SavedProject> a = openProject(m_options.file);
    if (!a)
        return fail(a.error());
    const Result<SavedProject> b = openProject(m_options.otherFile);
    if (!b)
        return fail(b.error());
    const ProjectComparison comparison(*a, *b, m_options.cores);
    if (comparison.isEmpty())
        return fail({Error::Usage, tr("The projects have no waves of these cores.")});
    m_captures = comparison.json();
    if (!m_options.json) {
        for (const QString &line : comparison.lines())
            print(line);
    }
    return comparison.isEqual() ? ExitStatus::Captured : ExitStatus::Different;
}

std::optional<Error> CaptureProgram::prepare()
{
    if (m_options.delay && !m_design->traits().hasDelay)
        return Error{Error::Usage, tr("--delay goes with a lite core; these wait for a trigger.")};
    if (const Result<QString> id = m_design->load(m_options.file); !id)
        return id.error();
    if (kindOf(m_options) == DescriptionKind::Unknown)
        return Error{
            Error::Format,
            tr("%1 can not be used: its mode is neither Standard nor Lite.").arg(m_options.file)};
    m_manager.setDeviceName(m_options.device);
    m_design->setDelay(m_options.delay.value_or(0));
    if (const std::optional<Error> error = m_design->apply(m_options.triggers))
        return error;
    if (const std::optional<Error> error = m_design->choose(m_options.cores))
        return error;
    if (isAuto() && !m_design->canAuto())
        return Error{Error::Usage, tr("--auto takes one core with one window.")};
    return {};
}

void CaptureProgram::warnOfMissingDevice()
{
    if (m_options.device.isEmpty() && m_options.file.endsWith(".keo"))
        m_report.say(tr("No --device given: if the model is one that stores the samples of a .keo "
                        "design late, they are shown one off."));
}

void CaptureProgram::startCapture()
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
    m_design->start();
    rearmTimers();
}

void CaptureProgram::rearmTimers()
{
    if (m_ended)
        return;
    if (m_options.forceAfter)
        m_forceTimer->start(int(*m_options.forceAfter));
    m_report.waitFor(waitingFor());
}

QString CaptureProgram::waitingFor() const
{
    const QString round =
        isAuto() ? tr(", round %1 of %2")
                       .arg(QString::number(m_round + 1), QString::number(*m_options.autoRounds))
                 : QString();
    const QString cores = m_design->waitingFor();
    return tr("%1 on %2%3").arg(cores.isEmpty() ? tr("the samples") : cores, m_cable, round);
}

void CaptureProgram::onSectionRead(int core, int window, int sectionsRead, int sections)
{
    m_forceTimer->stop();
    m_report.readSections(
        tr("core %1 window %2").arg(QString::number(core), QString::number(window)), sectionsRead,
        sections);
}

/// Told on the spot; what concerns the samples decides the status at the end as well.
void CaptureProgram::onReportChanged()
{
    const RunReport &report = m_manager.report();
    const bool isSilent = report.server == RunReport::Server::Silent;
    if (isSilent == std::exchange(m_isSilent, isSilent) || m_ended)
        return;
    m_report.say(isSilent ? report.text() : tr("The cable server answers again."));
    m_report.waitFor(waitingFor());
}

void CaptureProgram::onCaptured(int core, int window)
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
    const CaptureLabel label{core, window, isAuto() ? m_round : 0, m_design->traits().exportMode};
    if (!m_options.project.isEmpty())
        keepForProject(*captured);
    const Result<QStringList> written =
        writeFiles(label, captured->core, captured->contents(), m_windows == 1 && !isAuto());
    if (written)
        reportCapture(label, captured->core, captured->elements.first().data.size(), *written);
    else if (m_exportFault.isEmpty())
        m_exportFault = written.error().message;
    // A project is still worth the rest of the run, but no further round.
    if (!written && (m_options.project.isEmpty() || isAuto())) {
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

Result<QStringList> CaptureProgram::writeFiles(const CaptureLabel &label, const ExportCore &core,
                                               WaveMonitor::WindowContents contents,
                                               bool isOnly) const
{
    Result<QStringList> written = writeCapture(m_options, label, core, contents);
    if (!written || m_options.picture.isEmpty())
        return written;
    const QString path = picturePath(m_options, label, isOnly);
    if (!m_drawPicture(path, m_options.pictureSize, label.core, label.window, std::move(contents)))
        return Error{Error::File, tr("The picture %1 can not be written.").arg(path)};
    written->append(path);
    return written;
}

void CaptureProgram::reportCapture(const CaptureLabel &label, const ExportCore &core,
                                   qsizetype samples, const QStringList &files)
{
    if (!m_options.json) {
        m_report.finish();
        for (const QString &path : files)
            print(path);
    }
    QJsonObject entry{{"core", label.core},
                      {"window", label.window},
                      {"samples", samples},
                      {"trigger_position", core.triggerSample},
                      {"files", QJsonArray::fromStringList(files)}};
    if (label.round > 0)
        entry.insert("round", label.round);
    m_captures.append(entry);
}

void CaptureProgram::keepForProject(const CapturedWindow &captured)
{
    if (isAuto())
        m_kept.captures.clear(); // the last round counts
    m_kept.kind = m_design->traits().kind;
    m_kept.captures.push_back({captured.core, captured.window, captured.contents()});
}

/// What there is to save is there. A failed export does not keep it from being saved.
void CaptureProgram::endWithProject()
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
        } else if (!m_options.json) {
            print(m_options.project);
            print(*saved);
        }
    }
    end(faults.isEmpty() ? ExitStatus::Captured : ExitStatus::FileError,
        faults.join(QStringLiteral("; ")));
}

void CaptureProgram::onTriggerComplete(int resultId)
{
    if (resultId != 0)
        end(ExitStatus::Refused, deviceErrorText(words(), resultId));
    else if (m_windowsLeft == 0)
        endWithProject();
    else
        // A device that did not open ends the run first and gives the reason right after.
        QTimer::singleShot(0, this, &CaptureProgram::endIfIncomplete);
}

void CaptureProgram::endIfIncomplete()
{
    end(ExitStatus::Refused, tr("The capture ended before all samples had arrived. %1")
                                 .arg(m_manager.report().text())
                                 .trimmed());
}

void CaptureProgram::end(ExitStatus status, const QString &message)
{
    if (m_ended)
        return;
    m_ended = true;
    m_status = status;
    m_message = message;
    m_forceTimer->stop();
    m_timeoutTimer->stop();
    m_linkTimer->stop();
    m_report.finish();
    if (m_manager.state() != CaptureState::Idle)
        m_manager.stop(); // disarms the cores and closes the device
    QCoreApplication::quit();
}

void CaptureProgram::printJson()
{
    if (m_options.task == CaptureOptions::Task::Compare) {
        printDocument({{"status", int(m_status)},
                       {"a", m_options.file},
                       {"b", m_options.otherFile},
                       {"windows", m_captures}});
        return;
    }
    if (!m_preview.isEmpty()) {
        m_preview.insert("status", int(m_status));
        m_preview.insert("file", m_options.file);
        printDocument(m_preview);
        return;
    }
    QJsonObject document{
        {"status", int(m_status)}, {"file", m_options.file}, {"captures", m_captures}};
    if (m_options.task == CaptureOptions::Task::Capture)
        document.insert("cable", m_cable);
    if (m_projectSaved)
        document.insert("project", m_options.project);
    printDocument(document);
}

void CaptureProgram::printDocument(QJsonObject document)
{
    if (!m_message.isEmpty())
        document.insert("message", m_message);
    print(QString::fromUtf8(QJsonDocument(document).toJson()).trimmed());
}

} // namespace KEO
