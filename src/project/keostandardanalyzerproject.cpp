#include "keostandardanalyzerproject.h"

#include "capturedisplay.h"
#include "datafilecheck.h"
#include "exportcore.h"
#include "projectfile.h"
#include "projectlog.h"
#include "runcontrols.h"

#include <capture/standarddatamanager.h>
#include <config/standardconfig.h>
#include <programmer/keoprogrammerwidget.h>
#include <trigger/dynamicconfigwidget.h>
#include <wave/wavemonitorwidget.h>

#include <QDockWidget>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QSignalBlocker>
#include <QStyle>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace KEO {

using WaveMonitor::SignalElement;
using WaveMonitor::WaveMonitorWidget;

namespace {

constexpr int kTreeCharacters = 16; // at least, so that a core's number is never cut off
constexpr int kTreeStretch = 1;
constexpr int kConfigStretch = 10;

/// Width in pixels at which an item shows whole, with its check box and a bar beside it.
int treeWidth(const QTreeWidget &tree)
{
    const QStyle *style = tree.style();
    return tree.fontMetrics().horizontalAdvance(QStringLiteral("Core 000")) +
           style->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, &tree) +
           2 * style->pixelMetric(QStyle::PM_CheckBoxLabelSpacing, nullptr, &tree) +
           style->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, &tree);
}

QDockWidget *makeFixedDock(const char *name, const QString &title, QWidget *content)
{
    auto *dock = new QDockWidget(title);
    dock->setObjectName(QLatin1String(name));
    dock->setFeatures(QDockWidget::NoDockWidgetFeatures);
    dock->setWidget(content);
    return dock;
}

} // namespace

KeoStandardAnalyzerProject::KeoStandardAnalyzerProject(QObject *parent)
    : CaptureProject(parent), m_dataManager(std::make_unique<KeoStandardDataManager>())
{
    connect(m_dataManager.get(), &KeoStandardDataManager::readRamComplete, this,
            &KeoStandardAnalyzerProject::drawSignalView);
    connect(m_dataManager.get(), &KeoStandardDataManager::triggerComplete, this,
            &KeoStandardAnalyzerProject::onComplete);
    connect(m_dataManager.get(), &KeoStandardDataManager::statusChanged, this,
            &KeoStandardAnalyzerProject::updateIsBusy);
}

KeoStandardAnalyzerProject::~KeoStandardAnalyzerProject()
{
    deletePage();
}

bool KeoStandardAnalyzerProject::isBusy() const
{
    return m_dataManager->state() != CaptureState::Idle;
}

bool KeoStandardAnalyzerProject::openFile(const QString &path)
{
    if (isBusy())
        return false;
    const QPointer<KeoStandardAnalyzerProject> self(this);
    bool isOpen = false;
    if (path.endsWith(QLatin1String(".analyzer_prj")))
        isOpen = openProjectFile(path);
    else if (path.endsWith(QLatin1String(".keo")) || path.endsWith(QLatin1String(".zeo")))
        isOpen = openKeoFile(path);
    if (isOpen && self) {
        updateActions();
        watchDescription();
    }
    return isOpen;
}

bool KeoStandardAnalyzerProject::openKeoFile(const QString &path)
{
    if (!loadCores(path)) {
        showError(tr("Invalid KEO file specified in project."));
        return false;
    }
    m_keoFilePath = path;
    updateCoreTree();
    return true;
}

bool KeoStandardAnalyzerProject::openProjectFile(const QString &path)
{
    const Result<ProjectFile> project = readProjectFile(path);
    if (!project)
        qCDebug(keoProject).noquote() << project.error().message;
    if (!project || !loadCores(project->keoFile)) {
        showError(tr("Invalid KEO file specified in project file."));
        return false;
    }
    m_keoFilePath = project->keoFile;
    m_projectFilePath = path;
    m_dataFilePath = project->dataFile;
    updateCoreTree();
    loadDataFile(project->dataFile);
    return true;
}

bool KeoStandardAnalyzerProject::loadCores(const QString &path)
{
    if (m_dynamicConfigWidget) {
        m_dynamicConfigWidget->saveToCore();
        m_dynamicConfigWidget->setCore(nullptr); // loading deletes the cores
    }
    QString designId;
    const bool loaded = m_dataManager->load(path, designId);
    if (loaded)
        setDesignId(designId);
    else
        showCore(m_coreTree ? m_coreTree->indexOfTopLevelItem(m_coreTree->currentItem()) : -1);
    return loaded;
}

bool KeoStandardAnalyzerProject::saveDescription(const QString &path)
{
    if (m_dynamicConfigWidget)
        m_dynamicConfigWidget->saveToCore();
    return saveStandardConfigFile(m_dataManager->cores(), path);
}

WindowToSave KeoStandardAnalyzerProject::numbersOf(const WaveMonitorWidget &wave, int) const
{
    return {wave.coreNumber(), wave.windowNumber()};
}

bool KeoStandardAnalyzerProject::fitsDesign(const LoadedWindows &windows) const
{
    return fitsCores(windows, m_dataManager->cores());
}

std::optional<CaptureProject::SavedTab>
KeoStandardAnalyzerProject::tabOf(const LoadedWindow &window) const
{
    const std::optional<WindowPlace> place = placeOf(window);
    if (!place)
        return std::nullopt;
    return SavedTab{place->core, place->window,
                    tr("core %1 Window %2").arg(place->core).arg(place->window)};
}

void KeoStandardAnalyzerProject::onStop()
{
    const QPointer<KeoStandardAnalyzerProject> self(this);
    m_dataManager->stop();
    if (!self)
        return;
    updateActions();
    showInformation(tr("Capture Stopped!"));
}

void KeoStandardAnalyzerProject::onForceTrigger()
{
    m_dataManager->forceTrigger();
    updateActions();
}

void KeoStandardAnalyzerProject::drawSignalView(int coreIdx, int winIdx)
{
    const QPointer<KeoStandardAnalyzerProject> self(this);
    const QList<QBitArray> sections = m_dataManager->rawWindow(winIdx);
    if (!self)
        return;
    const CoreConfig *core = m_dataManager->coreByIndex(coreIdx);
    if (!core)
        return;
    const QList<SignalElement> elements = extractSignalData(core, sections);
    if (elements.isEmpty()) {
        showError(tr("No data in core %1 window %2").arg(coreIdx).arg(winIdx));
        return;
    }
    showCapture({coreIdx, winIdx, core->trigger_pos, core->signals, elements});
}

void KeoStandardAnalyzerProject::onWindowNumChanged()
{
    m_dynamicConfigWidget->saveToCore();
    updateActions();
}

void KeoStandardAnalyzerProject::onKoChanged(QTreeWidgetItem *item)
{
    {
        const QSignalBlocker blocker(m_coreTree);
        m_coreTree->setCurrentItem(item);
    }
    const int position = m_coreTree->indexOfTopLevelItem(item);
    if (CoreConfig *core = coreAt(position)) {
        m_dynamicConfigWidget->saveToCore();
        showCore(position);
        core->active = item->checkState(0) == Qt::Checked ? 1 : 0;
    }
    updateActions();
}

QWidget *KeoStandardAnalyzerProject::buildPage()
{
    m_coreTree = new QTreeWidget;
    m_coreTree->setObjectName(QStringLiteral("coreTree"));
    m_coreTree->setHeaderHidden(true);
    // A hidden header does not fit its column to the tree, which would bring the bar up for
    // nothing.
    m_coreTree->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_coreTree->setRootIsDecorated(false);
    m_coreTree->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_coreTree->setMinimumWidth(kTreeCharacters * m_coreTree->fontMetrics().averageCharWidth());
    m_coreTree->setSelectionMode(QAbstractItemView::SingleSelection);
    m_coreTree->setMinimumWidth(treeWidth(*m_coreTree));
    connect(m_coreTree, &QTreeWidget::itemClicked, this, &KeoStandardAnalyzerProject::onKoChanged);
    // The keyboard reaches the tree as well: the arrow keys and the space bar.
    connect(m_coreTree, &QTreeWidget::itemChanged, this, &KeoStandardAnalyzerProject::onKoChanged);
    connect(m_coreTree, &QTreeWidget::currentItemChanged, this,
            &KeoStandardAnalyzerProject::onKoChanged);

    m_dynamicConfigWidget = new DynamicConfigWidget;
    m_dynamicConfigWidget->setObjectName(QStringLiteral("dynamicConfigWidget"));
    connect(m_dynamicConfigWidget, &DynamicConfigWidget::windowNumChanged, this,
            &KeoStandardAnalyzerProject::onWindowNumChanged);
    m_configDock = makeFixedDock("configDock", tr(" Core 0"), m_dynamicConfigWidget);

    auto *coreArea = new QWidget;
    coreArea->setObjectName(QStringLiteral("coreArea"));
    auto *areaLayout = new QHBoxLayout(coreArea);
    areaLayout->setContentsMargins(0, 0, 0, 0);
    areaLayout->setSpacing(0);
    areaLayout->addWidget(makeFixedDock("treeDock", tr(" Ko Core"), m_coreTree), kTreeStretch);
    areaLayout->addWidget(m_configDock, kConfigStretch);

    auto *configTab = new QWidget;
    configTab->setObjectName(QStringLiteral("configTab"));
    auto *layout = new QVBoxLayout(configTab);
    layout->addWidget(makeProgrammerWidget());
    layout->addWidget(coreArea, 1); // all the room: expressions and units may be many
    layout->addStretch();
    return configTab;
}

QString KeoStandardAnalyzerProject::pageTitle() const
{
    return tr("Configuration");
}

void KeoStandardAnalyzerProject::resetPage()
{
    m_dynamicConfigWidget->setEnabled(true);
}

void KeoStandardAnalyzerProject::setPageEnabled(bool enabled)
{
    if (m_dynamicConfigWidget)
        m_dynamicConfigWidget->setEnabled(enabled);
    if (m_coreTree)
        m_coreTree->setEnabled(enabled);
}

bool KeoStandardAnalyzerProject::canStart() const
{
    return !m_dataManager->activeCores().isEmpty();
}

bool KeoStandardAnalyzerProject::canAuto() const
{
    return suitsAuto(m_dataManager->activeCores());
}

int KeoStandardAnalyzerProject::autorun() const
{
    return m_dataManager->autorun();
}

void KeoStandardAnalyzerProject::setAutorun(int rounds)
{
    m_dataManager->setAutorun(rounds);
}

void KeoStandardAnalyzerProject::setDeviceName(const QString &name)
{
    m_dataManager->setDeviceName(name);
}

void KeoStandardAnalyzerProject::openDevice(const QVariantList &chain)
{
    m_dataManager->openDevice(chain);
}

void KeoStandardAnalyzerProject::startRun()
{
    m_dynamicConfigWidget->saveToCore();
    QList<int> positions;
    for (int position = 0; position < m_coreTree->topLevelItemCount(); ++position) {
        if (m_coreTree->topLevelItem(position)->checkState(0) == Qt::Checked)
            positions.append(position);
    }
    m_dataManager->start(positions);
}

void KeoStandardAnalyzerProject::keepNames(const WaveMonitorWidget &wave)
{
    CoreConfig *core = m_dataManager->coreByIndex(wave.coreNumber());
    if (!core)
        return;
    QMap<int, SignalNames> names;
    const QMap<int, SignalElement> elements = wave.signalMap();
    for (auto element = elements.begin(); element != elements.end(); ++element)
        names.insert(element.key(), {element->name, element->text});
    core->applySignalNames(names);
}

void KeoStandardAnalyzerProject::leaveDesign()
{
    const QPointer<KeoStandardAnalyzerProject> self(this);
    m_dataManager->stop();
    if (!self)
        return;
    if (m_dynamicConfigWidget)
        m_dynamicConfigWidget->setCore(nullptr);
    m_dataManager->release();
}

QString KeoStandardAnalyzerProject::unknownErrorText(int resultID) const
{
    return tr("Unknown device error ID%1.").arg(resultID);
}

/// The windows of a core stand side by side, so a core is new when it differs from the one before.
QList<ExportCore>
KeoStandardAnalyzerProject::exportCores(const QList<WaveMonitorWidget *> &monitors) const
{
    QList<ExportCore> cores;
    for (const WaveMonitorWidget *monitor : monitors) {
        const int index = monitor->coreNumber();
        if (!cores.isEmpty() && cores.last().index == index)
            continue;
        const CoreConfig *core = m_dataManager->coreByIndex(index);
        ExportCore exported;
        if (core)
            exported = exportCore(*core);
        exported.index = index;
        cores.append(exported);
    }
    return cores;
}

void KeoStandardAnalyzerProject::updateCoreTree()
{
    if (!m_coreTree)
        return;
    const QSignalBlocker blocker(m_coreTree);
    m_coreTree->clear();
    for (const auto &core : m_dataManager->cores()) {
        auto *item = new QTreeWidgetItem(m_coreTree, {tr("Core %1").arg(core->index)});
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(0, Qt::Unchecked);
    }
    if (CoreConfig *first = coreAt(0)) {
        m_coreTree->topLevelItem(0)->setCheckState(0, Qt::Checked);
        m_coreTree->setCurrentItem(m_coreTree->topLevelItem(0));
        first->active = 1;
    }
    showCore(0);
}

void KeoStandardAnalyzerProject::showCore(int position)
{
    CoreConfig *core = coreAt(position);
    if (!m_dynamicConfigWidget)
        return;
    m_dynamicConfigWidget->setCore(core);
    if (core)
        m_configDock->setWindowTitle(tr(" Core %1").arg(core->index));
}

CoreConfig *KeoStandardAnalyzerProject::coreAt(int position) const
{
    const CoreList &cores = m_dataManager->cores();
    return position >= 0 && size_t(position) < cores.size() ? cores[size_t(position)].get()
                                                            : nullptr;
}

} // namespace KEO
