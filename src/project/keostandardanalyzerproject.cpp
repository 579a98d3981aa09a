#include "keostandardanalyzerproject.h"

#include "runcontrols.h"

#include <capture/standarddatamanager.h>
#include <config/standardconfig.h>
#include <design/capturedisplay.h>
#include <design/datafilecheck.h>
#include <design/exportcore.h>
#include <programmer_ui/keoprogrammerwidget.h>
#include <trigger_ui/dynamicconfigwidget.h>
#include <wave/wavemonitorwidget.h>

#include <QDockWidget>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QSignalBlocker>
#include <QStyle>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace KEO {

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
    : CaptureProject(LayoutKey::CoreAndWindow, parent),
      m_dataManager(std::make_unique<KeoStandardDataManager>())
{
    connect(m_dataManager.get(), &KeoStandardDataManager::readRamComplete, this,
            &KeoStandardAnalyzerProject::drawSignalView);
}

KeoStandardAnalyzerProject::~KeoStandardAnalyzerProject()
{
    deletePage();
}

CaptureManager &KeoStandardAnalyzerProject::manager() const
{
    return *m_dataManager;
}

bool KeoStandardAnalyzerProject::loadDesign(const QString &path, QString &id)
{
    if (m_dynamicConfigWidget) {
        m_dynamicConfigWidget->saveToCore();
        m_dynamicConfigWidget->setCore(nullptr); // loading deletes the cores
    }
    const bool isLoaded = m_dataManager->load(path, id);
    if (isLoaded)
        updateCoreTree();
    else
        showCore(m_coreTree ? m_coreTree->indexOfTopLevelItem(m_coreTree->currentItem()) : -1);
    return isLoaded;
}

QString KeoStandardAnalyzerProject::invalidSessionText() const
{
    return tr("Invalid KEO file specified in project file.");
}

CaptureProject::SaveTargets KeoStandardAnalyzerProject::saveTargets(const QString &projectFile,
                                                                    const QString &dataFile) const
{
    return {projectFile, dataFile};
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

QString KeoStandardAnalyzerProject::stoppedText() const
{
    return tr("Capture Stopped!");
}

QString KeoStandardAnalyzerProject::forcedText() const
{
    return {}; // the waves that come of it tell enough
}

void KeoStandardAnalyzerProject::forceTrigger()
{
    m_dataManager->forceTrigger();
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
    showCapture(
        {coreIdx, winIdx, core->trigger_pos, core->signals, extractSignalData(core, sections)},
        tr("No data in core %1 window %2").arg(coreIdx).arg(winIdx));
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

void KeoStandardAnalyzerProject::keepNames(int core, const QMap<int, SignalNames> &names)
{
    if (CoreConfig *config = m_dataManager->coreByIndex(core))
        config->applySignalNames(names);
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
