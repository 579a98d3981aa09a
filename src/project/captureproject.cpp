#include "captureproject.h"

#include "descriptionwatch.h"
#include "programmerpage.h"
#include "projectlog.h"
#include "runcontrols.h"
#include "runtoolbar.h"
#include "waitingtip.h"

#include <capture/capturemanager.h>
#include <export_ui/exportdialog.h>
#include <link/jtagsession.h>
#include <programmer_ui/keoprogrammerwidget.h>
#include <wave/wavemonitorwidget.h>
#include <widgets/messagebox.h>

#include <QAction>
#include <QCoreApplication>
#include <QFileInfo>
#include <QKeyEvent>
#include <QTabWidget>
#include <QToolBar>
#include <QWidgetAction>

namespace KEO {

using WaveMonitor::WaveMonitorWidget;

namespace {

/// By flat position.
QMap<int, SignalNames> namesIn(const WaveMonitorWidget &wave)
{
    QMap<int, SignalNames> names;
    const QMap<int, WaveMonitor::SignalElement> elements = wave.signalMap();
    for (auto element = elements.begin(); element != elements.end(); ++element)
        names.insert(element.key(), {element->name, element->text});
    return names;
}

} // namespace

CaptureProject::CaptureProject(LayoutKey layoutKey, QObject *parent)
    : AnalyzerProject(parent),
      m_descriptionWatch(new DescriptionWatch([this] { return isBusy(); }, this)),
      m_programmer(new ProgrammerPage(this)),
      m_waveTabs(layoutKey)
{
    connectDescriptionWatch();
}

CaptureProject::~CaptureProject()
{
    WaitingTip::close();
}

/// The main window opens and closes files; a project knows only that it has one.
void CaptureProject::connectDescriptionWatch()
{
    connect(m_descriptionWatch, &DescriptionWatch::reopenRequested, this,
            [this](const QString &path) {
                QMetaObject::invokeMethod(parent(), "reopen", Q_ARG(QString, path));
            });
    connect(m_descriptionWatch, &DescriptionWatch::closeRequested, this,
            [this] { QMetaObject::invokeMethod(parent(), "closeCurrentProject"); });
    // What was downloaded belongs to the description of before.
    connect(m_descriptionWatch, &DescriptionWatch::reloaded, this, [this] {
        if (m_programmer->widget())
            m_programmer->widget()->setEnabledByUser(false);
    });
}

bool CaptureProject::isBusy() const
{
    return manager().state() != CaptureState::Idle;
}

void CaptureProject::deletePage()
{
    delete m_page;
}

void CaptureProject::setupProject(QWidget *mainWindow)
{
    m_mainWindow = mainWindow;
    if (mainWindow)
        mainWindow->installEventFilter(this);
    if (!m_runToolBar) {
        buildToolBar();
        connectManager();
    }
    if (!m_page)
        m_page = buildPage();
    m_programmer->reset();
    resetPage();
    if (toolBarGetter) {
        m_runToolBar->setCables(JtagSession::instance()->availableCables());
        m_runToolBar->attach(*toolBarGetter());
    }
    if (QTabWidget *tabs = tabWidget())
        tabs->addTab(m_page, pageTitle());
    updateActions();
}

void CaptureProject::buildToolBar()
{
    m_runToolBar = new RunToolBar(this);
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

void CaptureProject::connectManager()
{
    connect(&manager(), &CaptureManager::triggerComplete, this, &CaptureProject::onComplete);
    connect(&manager(), &CaptureManager::statusChanged, this, &CaptureProject::updateIsBusy);
}

bool CaptureProject::closeProject(QWidget *, const std::function<bool()> &askStop)
{
    const QPointer<CaptureProject> self(this);
    if (isBusy() && (!askStop || !askStop()))
        return false;
    if (self)
        leaveDesign();
    if (!self)
        return true;
    m_programmer->reset();
    WaitingTip::close();
    m_descriptionWatch->stop();
    m_keoFilePath.clear();
    m_projectFilePath.clear();
    m_dataFilePath.clear();
    if (toolBarGetter && m_runToolBar)
        m_runToolBar->detach(*toolBarGetter());
    clearWaveMonitors(WaveTabs::Layouts::Forget);
    updateActions(); // takes Save and Export away with the waves
    if (QTabWidget *tabs = tabWidget())
        tabs->removeTab(tabs->indexOf(m_page));
    if (m_mainWindow)
        m_mainWindow->removeEventFilter(this);
    tabWidgetGetter = nullptr;
    toolBarGetter = nullptr;
    openActionGetter = nullptr;
    return true;
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
    if (watched != m_mainWindow || event->type() != QEvent::KeyPress || !m_runToolBar)
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
    startIfFit(RunKind::Single);
}

void CaptureProject::onAuto()
{
    startIfFit(RunKind::Auto);
}

void CaptureProject::startIfFit(RunKind kind)
{
    const QPointer<CaptureProject> self(this);
    if (!isBusy() && m_programmer->mayCapture(m_mainWindow) && self)
        startCapture(kind);
}

void CaptureProject::startCapture(RunKind kind)
{
    if (isBusy() || !m_runToolBar)
        return;
    if (!JtagSession::instance()->selectCable(m_runToolBar->cableName())) {
        showError(tr("Can not connect with JTAG Server!"));
        return;
    }
    WaitingTip::show(m_mainWindow);
    manager().openDevice(m_programmer->deviceChain());
    clearWaveMonitors(WaveTabs::Layouts::Keep);
    if (kind == RunKind::Auto)
        manager().setAutorun(0);
    startRun();
    updateActions();
}

void CaptureProject::onStop()
{
    const QPointer<CaptureProject> self(this);
    manager().stop();
    if (!self)
        return;
    updateActions();
    showInformation(stoppedText());
}

void CaptureProject::onForceTrigger()
{
    forceTrigger();
    updateActions();
    showInformation(forcedText());
}

void CaptureProject::onZoomIn()
{
    if (WaveMonitorWidget *wave = currentWave())
        wave->zoomIn();
}

void CaptureProject::onZoomOut()
{
    if (WaveMonitorWidget *wave = currentWave())
        wave->zoomOut();
}

void CaptureProject::onZoomFit()
{
    if (WaveMonitorWidget *wave = currentWave())
        wave->zoomFit();
}

void CaptureProject::onExport()
{
    const QList<WaveMonitorWidget *> monitors = m_waveTabs.monitors();
    if (isBusy() || monitors.isEmpty())
        return;
    ExportDialog::run({.mode = exportMode(),
                       .directory = QFileInfo(m_keoFilePath).absolutePath(),
                       .cores = exportCores(monitors),
                       .waveMonitors = monitors},
                      m_mainWindow);
}

void CaptureProject::onComplete(int resultID)
{
    WaitingTip::close();
    updateActions();
    const QPointer<CaptureProject> self(this);
    const QString text = errorText(resultID);
    if (!text.isEmpty())
        showError(text);
    if (self && m_programmer->widget())
        m_programmer->widget()->applyPending();
}

void CaptureProject::setDevice(const QString &family, const QString &device, const QString &fsFile)
{
    manager().setDeviceName(device);
    if (m_programmer->widget())
        m_programmer->widget()->setDevice(family, device, fsFile);
}

KeoProgrammerWidget *CaptureProject::makeProgrammerWidget()
{
    KeoProgrammerWidget *widget = m_programmer->makeWidget();
    connect(widget, &KeoProgrammerWidget::programStatusChanged, this,
            &CaptureProject::onProgrammerChanged);
    connect(widget, &KeoProgrammerWidget::enableChange, this,
            &CaptureProject::onProgrammerEnableChange);
    connect(widget, &KeoProgrammerWidget::toolRunning, this, [this](bool isRunning) {
        if (isRunning)
            WaitingTip::show(m_mainWindow);
        else
            WaitingTip::close();
    });
    connect(this, &CaptureProject::programCableChanged, widget, &KeoProgrammerWidget::updateCable);
    connect(this, &CaptureProject::programChannelChanged, widget,
            &KeoProgrammerWidget::updateChannel);
    return widget;
}

QString CaptureProject::targetName() const
{
    return m_programmer->widget() ? m_programmer->widget()->targetName() : QString();
}

void CaptureProject::updateIsBusy(bool isBusy)
{
    if (m_programmer->widget())
        m_programmer->widget()->updateIsBusy(isBusy);
}

void CaptureProject::cabelChanged(int index)
{
    if (index < 0)
        return; // the list is being filled
    const int number = m_runToolBar->cableNumber(index);
    Q_EMIT programCableChanged(number / 2);
    if (const int channel = number % 2; channel > 0)
        Q_EMIT programChannelChanged(channel);
}

void CaptureProject::onProgrammerChanged(bool succ, const QString &text)
{
    m_programmer->setStatus(succ, text);
    if (succ)
        manager().setDeviceName(targetName());
    updateActions();
}

void CaptureProject::onProgrammerEnableChange(bool status)
{
    m_programmer->showStatus(status);
    updateActions();
}

QString CaptureProject::errorText(int resultID) const
{
    switch (resultID) {
    case 0:
        return {};
    case -20:
        return tr("Device does not load fs file yet.");
    case 1:
        return tr("Open device failed.");
    default:
        return unknownErrorText(resultID);
    }
}

void CaptureProject::updateActions()
{
    if (!m_runToolBar)
        return;
    RunSituation situation;
    situation.busy = isBusy();
    situation.canStart = canStart();
    situation.canAuto = canAuto();
    situation.needsProgramming = m_programmer->needsProgramming();
    situation.autorun = manager().autorun();
    situation.hasWaves = !m_waveTabs.isEmpty();
    const RunControls controls = runControls(situation);

    const RunActions &a = m_runToolBar->actions();
    if (openActionGetter)
        openActionGetter()->setEnabled(controls.open);
    a.startAction->setEnabled(controls.start);
    a.autoAction->setEnabled(controls.autoRun);
    a.stopAction->setEnabled(controls.stop);
    a.forceTriggerAction->setEnabled(controls.forceTrigger);
    a.saveAction->setEnabled(controls.save);
    a.exportAction->setEnabled(controls.save);
    setPageEnabled(controls.settings);
    if (m_programmer->widget())
        m_programmer->widget()->setEnabled(controls.settings);
    if (!situation.busy)
        m_descriptionWatch->tellPending();
}

void CaptureProject::showCapture(const CapturedWindow &captured, const QString &emptyText)
{
    if (captured.elements.isEmpty()) {
        showError(emptyText);
        return;
    }
    const int rounds = manager().autorun();
    if (rounds >= 1 && !m_waveTabs.isEmpty()) {
        m_waveTabs.updateFirst(captured.elements, rounds);
        return;
    }
    WaveMonitorWidget *wave = m_waveTabs.add(captured, m_mainWindow);
    if (rounds != -1) {
        WaitingTip::close();
        wave->setAutorunCounter(rounds);
    }
    if (QTabWidget *tabs = tabWidget()) {
        const bool isOnPage = tabs->currentWidget() == m_page;
        tabs->addTab(wave, wave->windowTitle());
        if (isOnPage)
            tabs->setCurrentWidget(wave);
    }
}

void CaptureProject::clearWaveMonitors(WaveTabs::Layouts layouts)
{
    if (layouts == WaveTabs::Layouts::Keep) {
        for (const WaveMonitorWidget *wave : m_waveTabs.monitors())
            keepNames(wave->coreNumber(), namesIn(*wave));
    }
    m_waveTabs.clear(tabWidget(), layouts);
}

void CaptureProject::showError(const QString &text)
{
    if (m_openErrors.contains(text)) {
        qCDebug(keoProject).noquote() << "error not shown a second time:" << text;
        return;
    }
    m_openErrors.insert(text);
    const QPointer<CaptureProject> self(this);
    showBox(QMessageBox::Critical, m_mainWindow, tr("Error"), text);
    if (self)
        m_openErrors.remove(text);
}

void CaptureProject::showWarning(const QString &text)
{
    showBox(QMessageBox::Warning, m_mainWindow, tr("Warning"), text);
}

void CaptureProject::showInformation(const QString &text)
{
    if (text.isEmpty())
        return;
    const QString title = m_mainWindow ? m_mainWindow->windowTitle() : QString();
    showBox(QMessageBox::Information, m_mainWindow, title, text);
}

QTabWidget *CaptureProject::tabWidget() const
{
    return tabWidgetGetter ? tabWidgetGetter() : nullptr;
}

WaveMonitorWidget *CaptureProject::currentWave() const
{
    const QTabWidget *tabs = tabWidget();
    return tabs ? qobject_cast<WaveMonitorWidget *>(tabs->currentWidget()) : nullptr;
}

} // namespace KEO
