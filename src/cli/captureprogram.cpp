#include "captureprogram.h"

#include "interruption.h"

#include <config/standardconfig.h>
#include <link/jtagsession.h>
#include <project/capturedisplay.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace KEO {

namespace {

// How often the program looks whether the server is still there.
constexpr int kLinkCheckInterval = 500;
// Rows that the data manager reads at a time.
constexpr int kSectionRows = 128;

void print(FILE *stream, const QString &text)
{
    QTextStream(stream) << text << Qt::endl;
}

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

QString refusal(int resultId)
{
    switch (resultId) {
    case -20:
        return QStringLiteral("Device does not load fs file yet.");
    case 1:
        return QStringLiteral("Open device failed.");
    default:
        return QStringLiteral("Unknown device error ID%1.").arg(resultId);
    }
}

} // namespace

CaptureProgram::CaptureProgram(CaptureOptions options, PictureWriter drawPicture, QObject *parent)
    : QObject(parent),
      m_options(std::move(options)),
      m_drawPicture(std::move(drawPicture)),
      m_report(ProgressReport::styleFor(m_options.quiet)),
      m_forceTimer(new QTimer(this)),
      m_timeoutTimer(new QTimer(this)),
      m_linkTimer(new QTimer(this))
{
    m_forceTimer->setSingleShot(true);
    m_timeoutTimer->setSingleShot(true);
    connect(m_forceTimer, &QTimer::timeout, this, [this] {
        m_report.say(tr("Forcing the trigger."));
        m_manager.forceTrigger();
    });
    connect(m_timeoutTimer, &QTimer::timeout, this, [this] {
        end(ExitStatus::TimedOut, tr("Timed out while waiting for %1.").arg(waitingFor()));
    });
    connect(m_linkTimer, &QTimer::timeout, this, [this] {
        if (!JtagSession::instance()->isCurrentConnected())
            end(ExitStatus::NoServer, tr("The server of %1 went away.").arg(m_cable));
    });
    connect(&m_manager, &KeoStandardDataManager::readRamComplete, this,
            &CaptureProgram::onReadRamComplete);
    connect(&m_manager, &KeoStandardDataManager::sectionRead, this, &CaptureProgram::onSectionRead);
    connect(&m_manager, &KeoStandardDataManager::triggerComplete, this,
            &CaptureProgram::onTriggerComplete);
}

ExitStatus CaptureProgram::run()
{
    switch (m_options.task) {
    case CaptureOptions::Task::ShowHelp:
        print(stdout, m_options.helpText);
        return ExitStatus::Captured;
    case CaptureOptions::Task::ShowVersion:
        print(stdout, QStringLiteral("signalscope-capture " SIGNALSCOPE_VERSION));
        return ExitStatus::Captured;
    case CaptureOptions::Task::ListCables:
        m_status = listCables();
        break;
    case CaptureOptions::Task::Capture:
        m_status = capture();
        break;
    case CaptureOptions::Task::ExportSaved:
        m_status = exportSaved();
        break;
    }
    m_report.finish();
    if (!m_message.isEmpty())
        print(stderr, QStringLiteral("signalscope-capture: ") + m_message);
    if (m_options.json && m_options.task != CaptureOptions::Task::ListCables)
        printJson();
    JtagSession::instance()->disconnectAll();
    return m_status;
}

ExitStatus CaptureProgram::listCables()
{
    const QStringList cables = m_cables.reachAll();
    if (m_options.json) {
        const QJsonObject document{{"cables", QJsonArray::fromStringList(cables)}};
        print(stdout, QString::fromUtf8(QJsonDocument(document).toJson()).trimmed());
    } else {
        for (const QString &cable : cables)
            print(stdout, cable);
    }
    if (!cables.isEmpty())
        return ExitStatus::Captured;
    m_message = tr("No cable server could be started or reached.");
    return ExitStatus::NoServer;
}

ExitStatus CaptureProgram::capture()
{
    const auto fail = [this](const Error &error) {
        m_message = error.message;
        return statusOf(error.kind);
    };
    const Result<QList<int>> cores = loadCores();
    if (!cores)
        return fail(cores.error());
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

    Interruption::ignoreInChildren();
    const Result<QString> cable = m_cables.reach(m_options.cable);
    Interruption interruption;
    if (!cable)
        return fail(cable.error());
    m_cable = *cable;
    if (!JtagSession::instance()->selectCable(m_cable))
        return fail({Error::Link, tr("Can not connect with JTAG Server!")});

    connect(&interruption, &Interruption::interrupted, this, [this] {
        end(Interruption::pending().value_or(ExitStatus::Interrupted), tr("Capture Stopped!"));
    });
    QTimer::singleShot(0, this, [this, cores] { startCapture(*cores); });
    QCoreApplication::exec();
    return m_status;
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
        return m_options.cores.isEmpty() || m_options.cores.contains(capture.core);
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
        const auto core = std::ranges::find_if(project->cores, [&](const auto &candidate) {
            return candidate->index == capture.core;
        });
        const CaptureLabel label{capture.core, capture.window, 0};
        const qsizetype samples = capture.contents.maxDataLength();
        const Result<QStringList> written =
            writeFiles(label, **core, std::move(capture.contents), m_windows == 1);
        if (!written)
            return fail(written.error());
        reportCapture(label, **core, samples, *written);
    }
    return ExitStatus::Captured;
}

Result<QList<int>> CaptureProgram::loadCores()
{
    QString id;
    if (!m_manager.load(m_options.file, id)) {
        // The data manager only says that nothing came of it; the loader knows why.
        bool ok = false;
        QString reason;
        loadStandardConfigFile(m_options.file, &id, &ok, &reason);
        if (ok || reason.isEmpty())
            reason = tr("It describes no standard analyzer core.");
        return Error{Error::File, tr("%1 can not be used: %2").arg(m_options.file, reason)};
    }
    if (m_options.device.isEmpty() && m_options.file.endsWith(".keo"))
        m_report.say(tr("No --device given: if the model is one that needs a longer capture of a "
                        ".keo design, the trigger is shown one sample off."));
    m_manager.setDeviceName(m_options.device);
    for (const auto &core : m_manager.cores())
        core->ensureExpressionFlags(); // nobody chooses among them here
    return chooseCores();
}

Result<QList<int>> CaptureProgram::chooseCores() const
{
    const CoreList &cores = m_manager.cores();
    QList<int> positions;
    for (const int number : m_options.cores) {
        const auto found = std::find_if(cores.begin(), cores.end(), [number](const auto &core) {
            return core->index == number;
        });
        if (found == cores.end())
            return Error{Error::Usage, tr("The description has no core %1.").arg(number)};
        positions.append(int(found - cores.begin()));
    }
    if (positions.isEmpty())
        positions.append(0);
    std::sort(positions.begin(), positions.end());
    for (const int position : positions) {
        const CoreConfig &core = *cores[size_t(position)];
        if (core.capture_amount < 1 || core.window_num < 1)
            return Error{Error::Format,
                         tr("Core %1 captures %2 samples in %3 windows: nothing to read.")
                             .arg(QString::number(core.index), QString::number(core.capture_amount),
                                  QString::number(core.window_num))};
        if (core.capture_amount > kSectionRows && core.capture_amount % kSectionRows != 0)
            return Error{Error::Format,
                         tr("Core %1 captures %2 samples; above %3 only multiples of %3 can be "
                            "read.")
                             .arg(QString::number(core.index), QString::number(core.capture_amount),
                                  QString::number(kSectionRows))};
    }
    if (isAuto() && (positions.size() > 1 || cores[size_t(positions.first())]->window_num != 1))
        return Error{Error::Usage, tr("--auto takes one core with one window.")};
    return positions;
}

void CaptureProgram::startCapture(const QList<int> &cores)
{
    for (const int position : cores)
        m_windows += m_manager.cores()[size_t(position)]->window_num;
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
    m_manager.start(cores);
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
    QStringList cores;
    for (const CoreConfig *core : m_manager.activeCores()) {
        if (core->active == 1)
            cores.append(QString::number(core->index));
    }
    const QString round =
        isAuto() ? tr(", round %1 of %2")
                       .arg(QString::number(m_round + 1), QString::number(*m_options.autoRounds))
                 : QString();
    if (cores.isEmpty())
        return tr("the samples on %1%2").arg(m_cable, round);
    return tr("the trigger of core %1 on %2%3")
        .arg(cores.join(QStringLiteral(", ")), m_cable, round);
}

void CaptureProgram::onSectionRead(int core, int window, int sectionsRead, int sections)
{
    m_forceTimer->stop();
    m_report.readSections(
        tr("core %1 window %2").arg(QString::number(core), QString::number(window)), sectionsRead,
        sections);
}

void CaptureProgram::onReadRamComplete(int core, int window)
{
    // Fetching the sections lets the run go on, so it happens once, whatever comes of them.
    const QList<QBitArray> sections = m_manager.rawWindow(window);
    if (m_ended)
        return;
    const CoreConfig &config = *m_manager.coreByIndex(core);
    const QList<WaveMonitor::SignalElement> elements = extractSignalData(&config, sections);
    if (elements.isEmpty()) {
        end(ExitStatus::Refused,
            tr("No data in core %1 window %2").arg(QString::number(core), QString::number(window)));
        return;
    }
    ++m_round;
    const CaptureLabel label{core, window, isAuto() ? m_round : 0};
    WaveMonitor::WindowContents contents;
    fillWindow(contents, config, elements);
    const Result<QStringList> written =
        writeFiles(label, config, std::move(contents), m_windows == 1 && !isAuto());
    if (!written) {
        end(ExitStatus::FileError, written.error().message);
        return;
    }
    reportCapture(label, config, elements.first().data.size(), *written);
    if (!m_options.project.isEmpty())
        keepForProject(label, config, elements);

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

Result<QStringList> CaptureProgram::writeFiles(const CaptureLabel &label, const CoreConfig &core,
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

void CaptureProgram::reportCapture(const CaptureLabel &label, const CoreConfig &core,
                                   qsizetype samples, const QStringList &files)
{
    if (!m_options.json) {
        m_report.finish();
        for (const QString &path : files)
            print(stdout, path);
    }
    QJsonObject entry{{"core", label.core},
                      {"window", label.window},
                      {"samples", samples},
                      {"trigger_position", core.trigger_pos},
                      {"files", QJsonArray::fromStringList(files)}};
    if (label.round > 0)
        entry.insert("round", label.round);
    m_captures.append(entry);
}

void CaptureProgram::keepForProject(const CaptureLabel &label, const CoreConfig &core,
                                    const QList<WaveMonitor::SignalElement> &elements)
{
    if (isAuto())
        m_kept.clear(); // the last round counts
    m_kept.push_back({label.core, label.window, {}});
    fillWindow(m_kept.back().contents, core, elements);
}

/// The run is complete: what there is to save is there.
void CaptureProgram::endWithProject()
{
    if (m_ended)
        return;
    if (m_options.project.isEmpty()) {
        end(ExitStatus::Captured);
        return;
    }
    const Result<QString> saved = saveProject(m_options.project, m_options.file, m_kept);
    if (!saved) {
        end(ExitStatus::FileError, saved.error().message);
        return;
    }
    m_projectSaved = true;
    m_report.finish();
    if (!m_options.json) {
        print(stdout, m_options.project);
        print(stdout, *saved);
    }
    end(ExitStatus::Captured);
}

void CaptureProgram::onTriggerComplete(int resultId)
{
    if (resultId != 0)
        end(ExitStatus::Refused, refusal(resultId));
    else if (m_windowsLeft == 0)
        endWithProject();
    else
        // A device that did not open ends the run first and gives the reason right after.
        QTimer::singleShot(0, this, &CaptureProgram::endIfIncomplete);
}

void CaptureProgram::endIfIncomplete()
{
    end(ExitStatus::NoServer, tr("The capture ended before all samples had arrived."));
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

void CaptureProgram::printJson() const
{
    QJsonObject document{
        {"status", int(m_status)}, {"file", m_options.file}, {"captures", m_captures}};
    if (m_options.task == CaptureOptions::Task::Capture)
        document.insert("cable", m_cable);
    if (m_projectSaved)
        document.insert("project", m_options.project);
    if (!m_message.isEmpty())
        document.insert("message", m_message);
    print(stdout, QString::fromUtf8(QJsonDocument(document).toJson()).trimmed());
}

} // namespace KEO
