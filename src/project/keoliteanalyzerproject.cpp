#include "keoliteanalyzerproject.h"

#include "keolitetriggeroptionwidget.h"

#include <capture/litedatamanager.h>
#include <config/liteconfig.h>
#include <design/capturedisplay.h>
#include <design/datafilecheck.h>
#include <design/exportcore.h>
#include <programmer_ui/keoprogrammerwidget.h>
#include <wave/wavemonitorwidget.h>

#include <QVBoxLayout>

namespace KEO {

using WaveMonitor::WaveMonitorWidget;

KeoLiteAnalyzerProject::KeoLiteAnalyzerProject(QObject *parent)
    : CaptureProject(LayoutKey::Window, parent),
      m_dataManager(std::make_unique<KeoLiteDataManager>())
{
    connect(m_dataManager.get(), &KeoLiteDataManager::readRamComplete, this,
            &KeoLiteAnalyzerProject::drawSignalView);
}

KeoLiteAnalyzerProject::~KeoLiteAnalyzerProject()
{
    deletePage();
}

CaptureManager &KeoLiteAnalyzerProject::manager() const
{
    return *m_dataManager;
}

QWidget *KeoLiteAnalyzerProject::buildPage()
{
    m_triggerOptionForm = new KeoLiteTriggerOptionWidget;
    m_triggerOptionForm->setObjectName(QStringLiteral("triggerOptionForm"));
    auto *triggerTab = new QWidget;
    triggerTab->setObjectName(QStringLiteral("triggerTab"));
    auto *layout = new QVBoxLayout(triggerTab);
    layout->addWidget(makeProgrammerWidget());
    layout->addWidget(m_triggerOptionForm);
    layout->addStretch();
    return triggerTab;
}

QString KeoLiteAnalyzerProject::pageTitle() const
{
    return tr("Trigger");
}

void KeoLiteAnalyzerProject::resetPage()
{
    m_triggerOptionForm->checkAutoTrigger();
}

bool KeoLiteAnalyzerProject::canStart() const
{
    return m_dataManager->core() != nullptr;
}

void KeoLiteAnalyzerProject::startRun()
{
    m_dataManager->start(m_triggerOptionForm->delay());
}

void KeoLiteAnalyzerProject::forceTrigger()
{
    m_dataManager->onDelay();
}

QString KeoLiteAnalyzerProject::stoppedText() const
{
    return {}; // told where the waiting ends, see forcedText
}

/// A lite core waits for nothing but the user, and it is Force Trigger that ends this waiting. So
/// the box comes here and not after Stop: the other way round than with standard cores.
QString KeoLiteAnalyzerProject::forcedText() const
{
    return tr("Capture stopped!");
}

void KeoLiteAnalyzerProject::keepNames(int, const QMap<int, SignalNames> &names)
{
    if (LiteCoreConfig *core = m_dataManager->core())
        core->applySignalNames(names);
}

/// A run is not stopped and the core not let go. Only the end of the program closes a project
/// during a run; it drops the connections right after, and with them whatever a stop would have
/// sent. A core that is not in use costs nothing, and the next file replaces it.
void KeoLiteAnalyzerProject::leaveDesign()
{
    if (m_triggerOptionForm)
        m_triggerOptionForm->reset();
}

QString KeoLiteAnalyzerProject::unknownErrorText(int) const
{
    return tr("Unknown device error.");
}

QList<ExportCore> KeoLiteAnalyzerProject::exportCores(const QList<WaveMonitorWidget *> &) const
{
    const LiteCoreConfig *core = m_dataManager->core();
    return core ? QList{exportCore(*core)} : QList<ExportCore>();
}

void KeoLiteAnalyzerProject::drawSignalView()
{
    const QPointer<KeoLiteAnalyzerProject> self(this);
    const QList<QBitArray> sections = m_dataManager->rawCapture();
    if (!self || !isOpen()) // a run may outlive its project, see leaveDesign
        return;
    const LiteCoreConfig *core = m_dataManager->core();
    if (!core)
        return;
    showCapture({core->index, 0, 0, core->signals,
                 extractSignalData(core, sections, targetName(), m_dataManager->isZeo())},
                tr("No data."));
}

bool KeoLiteAnalyzerProject::loadDesign(const QString &path, QString &id)
{
    return m_dataManager->load(path, id);
}

QString KeoLiteAnalyzerProject::invalidSessionText() const
{
    return invalidDescriptionText();
}

/// The two paths change places, on purpose: a lite session that is saved once more after it was
/// opened has its samples under the name of the project file, and the paths under that of the
/// samples. Standard sessions do not do so; the two are not to be made alike.
CaptureProject::SaveTargets KeoLiteAnalyzerProject::saveTargets(const QString &projectFile,
                                                                const QString &dataFile) const
{
    return {.projectFile = dataFile, .dataFile = projectFile};
}

bool KeoLiteAnalyzerProject::saveDescription(const QString &path)
{
    const LiteCoreConfig *core = m_dataManager->core();
    return core && saveLiteConfigFile({*core}, path);
}

/// There is one core, which needs no number.
WindowToSave KeoLiteAnalyzerProject::numbersOf(const WaveMonitorWidget &, int position) const
{
    return {std::nullopt, position};
}

bool KeoLiteAnalyzerProject::fitsDesign(const LoadedWindows &windows) const
{
    const LiteCoreConfig *core = m_dataManager->core();
    return core && fitsLiteCore(windows, *core);
}

std::optional<CaptureProject::SavedTab>
KeoLiteAnalyzerProject::tabOf(const LoadedWindow &window) const
{
    const std::optional<int> number = windowNumberOf(window);
    if (!number)
        return std::nullopt;
    return SavedTab{m_dataManager->core()->index, *number, tr("Window %1").arg(*number)};
}

} // namespace KEO
