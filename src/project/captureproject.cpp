#include "captureproject.h"

#include "commandcopy.h"
#include "configpage.h"
#include "descriptionwatch.h"
#include "devicechooser.h"
#include "programmerlink.h"
#include "projectboxes.h"
#include "projectfiles.h"
#include "recoverykeeper.h"
#include "runcontrol.h"
#include "runstatus.h"
#include "runtoolbar.h"
#include "setupcarrier.h"
#include "statusline.h"
#include "triggerfromwaves.h"
#include "triggerrehearsal.h"
#include "waitingtip.h"
#include "whynotrigger.h"

#include <capture/registerpreview.h>
#include <design/design.h>
#include <export_ui/exportdialog.h>
#include <link/jtagsession.h>
#include <wave/wavemonitorwidget.h>

#include <QAction>
#include <QCoreApplication>
#include <QFileInfo>
#include <QKeyEvent>
#include <QStatusBar>
#include <QTabWidget>
#include <QToolBar>
#include <QWidgetAction>

#include <utility>

namespace KEO {

using WaveMonitor::WaveMonitorWidget;

CaptureProject::CaptureProject(Kind kind, QObject *parent)
    : AnalyzerProject(parent),
      m_design(std::move(kind.design)),
      m_page(std::move(kind.page)),
      m_waveTabs(m_design->traits().layoutKey),
      m_programmer(new ProgrammerLink(this)),
      m_boxes(new ProjectBoxes(this)),
      m_runToolBar(new RunToolBar(this)),
      m_descriptionWatch(new DescriptionWatch([this] { return isBusy(); }, this))
{
    m_status = new StatusLine(this);
    m_runStatus = new RunStatus(*m_design, *m_status, this);
    const ProjectParts parts{*m_design, *m_page, *m_programmer, m_waveTabs, *m_boxes, *m_status};
    m_run = new RunControl(parts, this);
    m_files = new ProjectFiles(parts, this);
    m_command = new CommandCopy(parts, this);
    m_recovery = new RecoveryKeeper(parts, *m_files, this);
    m_carrier = new SetupCarrier(parts, this);
    connect(m_carrier, &SetupCarrier::told, this, &CaptureProject::told);
    m_rehearsal = new TriggerRehearsal(parts, this);
    m_why = new WhyNoTrigger(parts, this);
    m_fromWaves = new TriggerFromWaves(parts, this);
    m_deviceChooser = new DeviceChooser(parts, this);
    connect(m_deviceChooser, &DeviceChooser::chosen, this, &CaptureProject::chooseDevice);
    connect(m_files, &ProjectFiles::told, this, &CaptureProject::told);
    connect(m_files, &ProjectFiles::saved, m_recovery, &RecoveryKeeper::saved);
    connect(m_recovery, &RecoveryKeeper::told, this, &CaptureProject::told);
    connect(m_run, &RunControl::shown, m_recovery, &RecoveryKeeper::captured);
    connect(m_run, &RunControl::wavesGoing, m_recovery, &RecoveryKeeper::finish);
    connect(m_run, &RunControl::shown, m_runStatus, &RunStatus::countWindow);
    connect(m_run, &RunControl::shown, m_rehearsal, &TriggerRehearsal::followWindows);
    connect(m_run, &RunControl::shown, m_fromWaves, &TriggerFromWaves::followWindows);
    connect(m_run, &RunControl::shown, m_why, &WhyNoTrigger::followWindows);
    connect(m_run, &RunControl::wavesGoing, m_why, &WhyNoTrigger::keepWindows);
    connect(this, &CaptureProject::told, m_status, &StatusLine::tell);
    connect(m_command->action(), &QAction::triggered, this, &CaptureProject::onCopyCommand);
    connect(m_run, &RunControl::changed, this, &CaptureProject::updateActions);
    connect(m_page.get(), &ConfigPage::changed, this, &CaptureProject::updateActions);
    connect(&m_design->manager(), &CaptureManager::triggerComplete, this,
            &CaptureProject::onComplete);
    connect(&m_design->manager(), &CaptureManager::statusChanged, m_programmer,
            &ProgrammerLink::busyChanged);
    connect(&m_design->session(), &JtagSession::connectionLost, this,
            &CaptureProject::updateConnections);
    connectToolBar();
    connectProgrammer();
    connectDescriptionWatch();
}

// The page goes while there still is somebody to talk to.
CaptureProject::~CaptureProject()
{
    m_rehearsal->leave();
    delete m_tab;
    WaitingTip::close();
}

void CaptureProject::connectToolBar()
{
    m_runToolBar->setStatusAction(m_programmer->statusAction());
    connect(m_runToolBar, &RunToolBar::cableIndexChanged, this, &CaptureProject::cabelChanged);
    const RunActions &a = m_runToolBar->actions();
    connect(a.startAction, &QAction::triggered, this, &CaptureProject::onStart);
    connect(a.autoAction, &QAction::triggered, this, &CaptureProject::onAuto);
    connect(a.stopAction, &QAction::triggered, this, &CaptureProject::onStop);
    connect(a.forceTriggerAction, &QAction::triggered, this, &CaptureProject::onForceTrigger);
    connect(a.zoomInAction, &QAction::triggered, this, &CaptureProject::onZoomIn);
    connect(a.zoomOutAction, &QAction::triggered, this, &CaptureProject::onZoomOut);
    connect(a.zoomFitAction, &QAction::triggered, this, &CaptureProject::onZoomFit);
    connect(a.exportAction, &QAction::triggered, this, &CaptureProject::onExport);
    connect(a.saveAction, &QAction::triggered, this, &CaptureProject::onSave);
}

void CaptureProject::connectProgrammer()
{
    connect(m_programmer, &ProgrammerLink::programStatusChanged, this,
            &CaptureProject::onProgrammerChanged);
    connect(m_programmer, &ProgrammerLink::enableChange, this,
            &CaptureProject::onProgrammerEnableChange);
    connect(m_programmer, &ProgrammerLink::toolRunning, this, &CaptureProject::updateActions);
    connect(m_programmer, &ProgrammerLink::rowsChanged, this, &CaptureProject::updateConnections);
    connect(this, &CaptureProject::programCableChanged, m_programmer,
            &ProgrammerLink::cableChanged);
    connect(this, &CaptureProject::programChannelChanged, m_programmer,
            &ProgrammerLink::channelChanged);
}

/// The main window opens and closes files; a project knows only that it has one.
void CaptureProject::connectDescriptionWatch()
{
    connect(m_descriptionWatch, &DescriptionWatch::reopenRequested, this,
            [this](const QString &path) {
                QMetaObject::invokeMethod(parent(), "reopen", Q_ARG(QString, path));
            });
    connect(m_descriptionWatch, &DescriptionWatch::reopenAndKeepRequested, this,
            [this](const QString &path) {
                QMetaObject::invokeMethod(parent(), "reopenAndKeep", Q_ARG(QString, path));
            });
    connect(m_descriptionWatch, &DescriptionWatch::closeRequested, this,
            [this] { QMetaObject::invokeMethod(parent(), "closeCurrentProject"); });
    connect(m_files, &ProjectFiles::readingDescription, m_descriptionWatch,
            &DescriptionWatch::prepare);
    // What was downloaded belongs to the description of before.
    connect(m_descriptionWatch, &DescriptionWatch::reloaded, m_programmer,
            &ProgrammerLink::switchOff);
}

bool CaptureProject::isBusy() const
{
    return m_design->isBusy();
}

void CaptureProject::setupProject(QWidget *mainWindow)
{
    m_boxes->setWindow(mainWindow);
    if (mainWindow)
        mainWindow->installEventFilter(this);
    if (!m_tab)
        m_tab = m_page->build(m_programmer->makePage());
    m_command->enter(*m_tab, mainWindow);
    m_deviceChooser->enter(*m_tab, mainWindow);
    m_programmer->reset();
    m_page->reset();
    if (toolBarGetter) {
        m_runToolBar->setCables(m_design->session().availableCables(), *toolBarGetter());
        m_runToolBar->attach(*toolBarGetter());
    }
    QTabWidget *tabs = tabWidgetGetter ? tabWidgetGetter() : nullptr;
    if (tabs)
        tabs->addTab(m_tab, m_page->title());
    m_waveTabs.enterWindow(mainWindow, tabs, m_tab);
    m_rehearsal->enter(*m_tab, mainWindow, tabs);
    m_fromWaves->enter(mainWindow);
    m_why->enter(m_tab, mainWindow, tabs);
    m_status->enter(mainWindow ? mainWindow->findChild<QStatusBar *>() : nullptr);
    m_runStatus->clear();
    updateConnections();
    updateActions();
}

bool CaptureProject::closeProject(QWidget *parent, const std::function<bool()> &askStop)
{
    const QPointer<CaptureProject> self(this);
    if (isBusy() && (!askStop || !askStop()))
        return false;
    if (self && !m_programmer->mayEndRun(parent))
        return false;
    if (self) {
        m_waveTabs.finishEditing();
        m_recovery->finish();
        m_page->leaveDesign();
        m_design->leave();
    }
    if (!self)
        return true;
    m_programmer->reset();
    WaitingTip::close();
    m_descriptionWatch->stop();
    m_files->close();
    m_carrier->leave();
    if (toolBarGetter)
        m_runToolBar->detach(*toolBarGetter());
    m_waveTabs.clear(WaveTabs::Layouts::Forget);
    updateActions(); // takes Save and Export away with the waves
    if (QTabWidget *tabs = m_waveTabs.leaveWindow())
        tabs->removeTab(tabs->indexOf(m_tab));
    if (QWidget *window = m_boxes->window())
        window->removeEventFilter(this);
    m_command->leave();
    m_rehearsal->leave();
    m_fromWaves->leave();
    m_deviceChooser->leave();
    m_why->leave();
    tabWidgetGetter = nullptr;
    toolBarGetter = nullptr;
    openActionGetter = nullptr;
    m_status->leave();
    Q_EMIT fileNamed({});
    return true;
}

bool CaptureProject::openFile(const QString &path)
{
    const QPointer<CaptureProject> self(this);
    const bool isOpened = m_files->open(path);
    if (isOpened && self) {
        if (std::exchange(m_clockedDescription, m_files->description()) != m_files->description())
            m_waveTabs.clockPeriods().setAll({}); // cores of another design
        updateActions();
        if (m_files->recovered())
            m_recovery->opened(*m_files->recovered());
        m_rehearsal->followWindows();
        m_fromWaves->followWindows();
        m_why->forget();
        m_why->followWindows();
        followFile();
    }
    return isOpened;
}

QString CaptureProject::refusal() const
{
    return m_files->fault();
}

/// What was recovered keeps its description, whatever becomes of the file that it came from.
void CaptureProject::followFile()
{
    if (m_files->recovered()) {
        Q_EMIT fileNamed(m_files->file(), tr("recovered"));
        return;
    }
    m_descriptionWatch->start(m_files->description(), m_tab);
    Q_EMIT fileNamed(m_files->file());
}

void CaptureProject::setDevice(const QString &family, const QString &device, const QString &fsFile)
{
    m_design->manager().setDeviceName(device);
    updateConnections();
    m_programmer->setDevice(family, device, fsFile);
}

std::shared_ptr<const ProjectSetup> CaptureProject::setup()
{
    auto setup = m_carrier->take();
    setup->isRehearsed = m_rehearsal->isOn();
    return setup;
}

void CaptureProject::takeOver(const ProjectSetup &setup)
{
    m_carrier->give(setup);
    m_rehearsal->setOn(setup.isRehearsed);
    updateActions();
}

void CaptureProject::setPace(const CapturePace &pace)
{
    m_design->manager().setPace(pace);
}

QString CaptureProject::startPreview()
{
    QStringList lines;
    m_page->withSettings([&] {
        const QList<QBitArray> words = m_design->startWords();
        if (words.isEmpty())
            return;
        lines.append(tr("Start would send %1 words:").arg(words.size()));
        lines.append(previewText(previewOf(words)));
        for (const auto &[core, finding] : m_design->findings())
            lines.append(tr("Core %1: %2").arg(QString::number(core), finding.text));
    });
    return lines.join(u'\n');
}

void CaptureProject::tell(const QString &text)
{
    m_status->tell(text);
}

void CaptureProject::stopReading()
{
    if (m_design->manager().state() == CaptureState::Reading)
        m_design->manager().stop();
}

bool CaptureProject::event(QEvent *event)
{
    if (event->type() != QEvent::KeyPress)
        return AnalyzerProject::event(event);
    const QPointer<CaptureProject> self(this);
    const int key = static_cast<QKeyEvent *>(event)->key();
    if (key == Qt::Key_F3 || key == Qt::Key_F4) {
        if (key == Qt::Key_F3)
            onForceTrigger();
        else
            onStop();
        WaitingTip::close();
    }
    return self ? AnalyzerProject::event(event) : true;
}

/// The window itself sees these keys only when no shortcut took them, so they come from the tip,
/// which is a window of its own without shortcuts. They do no more than the shortcuts would.
bool CaptureProject::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_boxes->window() || event->type() != QEvent::KeyPress)
        return AnalyzerProject::eventFilter(watched, event);
    const auto *press = static_cast<QKeyEvent *>(event);
    const RunActions &a = m_runToolBar->actions();
    const bool reachesRun = press->modifiers() == Qt::NoModifier &&
                            ((press->key() == Qt::Key_F3 && a.forceTriggerAction->isEnabled()) ||
                             (press->key() == Qt::Key_F4 && a.stopAction->isEnabled()));
    if (!reachesRun)
        return AnalyzerProject::eventFilter(watched, event);
    QCoreApplication::sendEvent(this, event);
    return true;
}

void CaptureProject::onStart()
{
    m_run->start(RunKind::Single, m_runToolBar->cableName());
}

void CaptureProject::onAuto()
{
    m_run->start(RunKind::Auto, m_runToolBar->cableName());
}

void CaptureProject::showCapture(int core, int window)
{
    m_run->show(core, window);
}

void CaptureProject::onComplete(int resultID)
{
    m_run->complete(resultID);
}

void CaptureProject::onStop()
{
    m_run->stop();
}

void CaptureProject::onForceTrigger()
{
    m_run->forceTrigger();
}

void CaptureProject::onZoomIn()
{
    if (WaveMonitorWidget *wave = m_waveTabs.current())
        wave->zoomIn();
}

void CaptureProject::onZoomOut()
{
    if (WaveMonitorWidget *wave = m_waveTabs.current())
        wave->zoomOut();
}

void CaptureProject::onZoomFit()
{
    if (WaveMonitorWidget *wave = m_waveTabs.current())
        wave->zoomFit();
}

/// The windows of a core stand side by side, so a core is new when it differs from the one before.
void CaptureProject::onExport()
{
    const QList<WaveMonitorWidget *> monitors = m_waveTabs.monitors();
    if (isBusy() || monitors.isEmpty())
        return;
    QList<ExportCore> cores;
    for (const WaveMonitorWidget *monitor : monitors) {
        if (cores.isEmpty() || cores.last().index != monitor->coreNumber())
            cores.append(m_design->exportCore(monitor->coreNumber()));
    }
    const QPointer<CaptureProject> self(this);
    const QString outcome =
        ExportDialog::run({.mode = m_design->traits().exportMode,
                           .directory = QFileInfo(m_files->description()).absolutePath(),
                           .cores = cores,
                           .waveMonitors = monitors,
                           .clockPeriods = &m_waveTabs.clockPeriods()},
                          m_boxes->window());
    if (self && !outcome.isEmpty())
        Q_EMIT told(outcome);
}

void CaptureProject::onSave()
{
    const QPointer<CaptureProject> self(this);
    const bool wasRecovered = m_files->recovered().has_value();
    m_files->save(parent());
    if (!self || m_files->file().isEmpty()) // closed in a box
        return;
    if (wasRecovered)
        followFile();
    else
        Q_EMIT fileNamed(m_files->file());
}

void CaptureProject::onCopyCommand()
{
    m_command->copy(m_files->description(), m_runToolBar->cableName());
}

void CaptureProject::cabelChanged(int index)
{
    if (index < 0)
        return; // the list is being filled
    updateConnections();
    const int number = m_runToolBar->cableNumber(index);
    Q_EMIT programCableChanged(number / 2);
    if (const int channel = number % 2; channel > 0)
        Q_EMIT programChannelChanged(channel);
}

void CaptureProject::onProgrammerChanged(bool succ, const QString &text)
{
    m_programmer->setStatus(succ, text);
    if (succ)
        m_design->manager().setDeviceName(m_programmer->targetName());
    updateConnections();
    updateActions();
}

void CaptureProject::onProgrammerEnableChange(bool status)
{
    m_programmer->showStatus(status);
    updateActions();
}

/// What the programmer's table holds of the user's is worth more than the name in it.
void CaptureProject::chooseDevice(const QString &family, const QString &device)
{
    if (isBusy() || m_programmer->isRunning())
        return;
    QMetaObject::invokeMethod(parent(), "keepDevice", Q_ARG(QString, family),
                              Q_ARG(QString, device));
    m_design->manager().setDeviceName(device);
    m_programmer->nameDevice(family, device);
    updateConnections();
    const QString doubt = m_design->deviceDoubt(device);
    const QString text = device.isEmpty()
                             ? tr("The device counts as not known from the next capture on.")
                             : tr("The device is %1 from the next capture on.").arg(device);
    m_status->tell(doubt.isEmpty() ? text : text + u' ' + doubt);
}

void CaptureProject::updateActions()
{
    const bool isIdle = !isBusy();
    const bool isReady = isIdle && !m_programmer->needsProgramming() && !m_programmer->isRunning();
    const bool hasResult = isIdle && !m_waveTabs.isEmpty();
    const RunActions &a = m_runToolBar->actions();
    if (openActionGetter)
        openActionGetter()->setEnabled(isIdle);
    a.startAction->setEnabled(isReady && m_design->canStart());
    a.autoAction->setEnabled(isReady && m_design->canAuto());
    a.stopAction->setEnabled(!isIdle);
    a.forceTriggerAction->setEnabled(!isIdle && m_design->manager().autorun() == -1);
    a.saveAction->setEnabled(hasResult);
    a.exportAction->setEnabled(hasResult);
    m_command->action()->setEnabled(isIdle);
    m_runToolBar->setCablesEnabled(isIdle);
    m_descriptionWatch->setButtonsEnabled(isIdle);
    m_page->setEnabled(isIdle);
    m_fromWaves->setEnabled(isIdle);
    m_deviceChooser->setEnabled(isIdle && !m_programmer->isRunning());
    m_programmer->setEnabled(isIdle);
    if (isIdle)
        m_descriptionWatch->tellPending();
}

void CaptureProject::updateConnections()
{
    const JtagSession &session = m_design->session();
    const QString cable = m_runToolBar->cableName();
    const QString device = m_design->deviceOfRun(m_programmer->targetName());
    const QString doubt = m_design->deviceDoubt(device);
    m_runToolBar->markCables([&](const QString &name) { return session.isConnected(name); });
    const bool isConnected = session.isConnected(cable);
    QString text = cable.isEmpty() ? tr("no cable") : cable;
    if (!cable.isEmpty() && !isConnected)
        text = tr("%1: server is gone").arg(cable);
    if (!device.isEmpty())
        text = tr("%1 on %2").arg(device, text);
    else if (!doubt.isEmpty())
        text = tr("unknown device on %1").arg(text);
    m_status->showDevice(text, !isConnected || !doubt.isEmpty(), doubt);
}

} // namespace KEO
