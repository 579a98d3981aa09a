#include "standarddesign.h"

#include "exportcore.h"

#include <config/capturelimits.h>
#include <config/standardconfig.h>

#include <QPointer>

namespace KEO {

StandardDesign::StandardDesign(JtagSession &session)
    : Design(DescriptionKind::Standard, session), m_manager(session)
{
    connect(&m_manager, &KeoStandardDataManager::readRamComplete, this, &Design::captured);
}

bool StandardDesign::loadCores(const QString &path, QString &id, QString &reason)
{
    if (!m_manager.load(path, id, &reason))
        return false;
    if (!cores().empty())
        cores().front()->active = 1;
    return true;
}

QByteArray StandardDesign::descriptionText() const
{
    return standardConfigBytes(cores(), m_manager.encoding());
}

void StandardDesign::leave()
{
    const QPointer<StandardDesign> self(this);
    m_manager.stop();
    if (self)
        m_manager.release();
}

std::optional<Error> StandardDesign::choose(const QList<int> &cores)
{
    for (const auto &core : this->cores())
        core->active = 0;
    for (const int number : cores.isEmpty() ? QList{this->cores().front()->index} : cores) {
        CoreConfig *core = m_manager.coreByIndex(number);
        if (!core)
            return unknownCore(number);
        core->active = 1;
    }
    for (CoreConfig *core : m_manager.activeCores()) {
        core->ensureExpressionFlags();
        if (std::optional<Error> obstacle = captureObstacle(*core))
            return obstacle;
    }
    return {};
}

std::optional<Error> StandardDesign::apply(const QList<TriggerOptions> &options)
{
    for (const TriggerOptions &entry : options) {
        CoreConfig *core = entry.core ? m_manager.coreByIndex(*entry.core) : cores().front().get();
        if (!core)
            return unknownCore(*entry.core);
        if (std::optional<Error> error = applyTriggerOptions(entry, *core))
            return error;
    }
    return {};
}

CoreSetup StandardDesign::setup() const
{
    CoreSetup setup;
    for (const auto &core : cores())
        setup.standard.push_back(copyOf(*core));
    return setup;
}

SettingsCarry StandardDesign::carry(const CoreSetup &before)
{
    return before.lite ? lostSetup(before) : carrySettings(before.standard, cores());
}

QString StandardDesign::deviceOfRun(const QString &) const
{
    return m_manager.deviceName();
}

bool StandardDesign::dependsOnDevice() const
{
    return !cores().empty() && !m_manager.isZeo();
}

Result<RunSettings> StandardDesign::runSettings(const QString &deviceModel) const
{
    RunSettings settings;
    settings.device = deviceOfRun(deviceModel);
    for (const CoreConfig *core : m_manager.activeCores()) {
        if (const std::optional<Error> obstacle = captureObstacle(*core))
            return *obstacle;
        const WrittenOptions written = triggerOptionsOf(*core);
        settings.cores.append(written.options);
        settings.remarks += written.remarks;
    }
    if (settings.cores.isEmpty())
        return Error{Error::Usage, tr("No core is checked.")};
    return settings;
}

bool StandardDesign::canStart() const
{
    return !m_manager.activeCores().isEmpty();
}

bool StandardDesign::canAuto() const
{
    const QList<CoreConfig *> chosen = m_manager.activeCores();
    return chosen.size() == 1 && chosen.first()->window_num == 1;
}

int StandardDesign::windowCount() const
{
    int windows = 0;
    for (const CoreConfig *core : m_manager.activeCores())
        windows += core->window_num;
    return windows;
}

QList<int> StandardDesign::chosenPositions() const
{
    QList<int> positions;
    for (size_t position = 0; position < cores().size(); ++position) {
        if (cores()[position]->active != 0)
            positions.append(int(position));
    }
    return positions;
}

void StandardDesign::start()
{
    m_manager.start(chosenPositions());
}

QList<QBitArray> StandardDesign::startWords() const
{
    return m_manager.startWords(chosenPositions());
}

QList<Design::CoreFinding> StandardDesign::findings() const
{
    QList<CoreFinding> all;
    for (const CoreConfig *core : m_manager.activeCores()) {
        for (const TriggerFinding &finding : checkTrigger(*core))
            all.append({core->index, finding});
    }
    return all;
}

std::optional<Rehearsal> StandardDesign::rehearse(int core,
                                                  const WaveMonitor::WindowContents &contents)
{
    CoreConfig *config = m_manager.coreByIndex(core);
    if (!config)
        return std::nullopt;
    config->ensureExpressionFlags();
    return KEO::rehearse(*config, portSamplesOf(*config, contents));
}

void StandardDesign::forceTrigger()
{
    m_manager.forceTrigger();
}

QString StandardDesign::waitingFor() const
{
    QStringList waiting;
    for (const CoreConfig *core : m_manager.activeCores()) {
        if (core->active == 1)
            waiting.append(QString::number(core->index));
    }
    return waiting.isEmpty() ? QString()
                             : tr("the trigger of core %1").arg(waiting.join(QStringLiteral(", ")));
}

std::optional<CapturedWindow> StandardDesign::take(int core, int window, const QString &)
{
    const QPointer<StandardDesign> self(this);
    const QList<QBitArray> sections = m_manager.rawWindow(window);
    const CoreConfig *config = self ? m_manager.coreByIndex(core) : nullptr;
    if (!config)
        return std::nullopt;
    return CapturedWindow{KEO::exportCore(*config), window, config->signals,
                          extractSignalData(config, sections)};
}

const CoreConfig *StandardDesign::triggerCore(int core) const
{
    return m_manager.coreByIndex(core);
}

CoreConfig *StandardDesign::triggerCore(int core)
{
    return m_manager.coreByIndex(core);
}

ExportCore StandardDesign::exportCore(int core) const
{
    const CoreConfig *config = m_manager.coreByIndex(core);
    ExportCore exported = config ? KEO::exportCore(*config) : ExportCore();
    exported.index = core;
    return exported;
}

void StandardDesign::keepNames(int core, const QMap<int, SignalNames> &names)
{
    if (CoreConfig *config = m_manager.coreByIndex(core))
        config->applySignalNames(names);
}

bool StandardDesign::fits(const LoadedWindows &windows, TriggerPosition position) const
{
    return fitsCores(windows, cores(), position);
}

std::optional<WindowPlace> StandardDesign::placeOf(const LoadedWindow &window) const
{
    return KEO::placeOf(window);
}

} // namespace KEO
