#include "litedesign.h"

#include "exportcore.h"

#include <capture/samplecutter.h>
#include <config/capturelimits.h>
#include <config/liteconfig.h>

#include <QPointer>

#include <algorithm>

namespace KEO {

LiteDesign::LiteDesign(JtagSession &session)
    : Design(DescriptionKind::Lite, session), m_manager(session)
{
    connect(&m_manager, &KeoLiteDataManager::readRamComplete, this,
            [this] { Q_EMIT captured(m_manager.core()->index, 0); });
}

bool LiteDesign::loadCores(const QString &path, QString &id, QString &reason)
{
    return m_manager.load(path, id, &reason);
}

QByteArray LiteDesign::descriptionText() const
{
    const LiteCoreConfig *core = m_manager.core();
    return core ? saveLiteConfig({*core}) : QByteArray();
}

std::optional<Error> LiteDesign::choose(const QList<int> &cores)
{
    const LiteCoreConfig &core = *m_manager.core();
    for (const int number : cores) {
        if (number != core.index)
            return unknownCore(number);
    }
    return captureObstacle(core);
}

std::optional<Error> LiteDesign::apply(const QList<TriggerOptions> &options)
{
    for (const TriggerOptions &entry : options) {
        if (entry.core && *entry.core != m_manager.core()->index)
            return unknownCore(*entry.core);
        if (!(entry == TriggerOptions{.core = entry.core}))
            return Error{Error::Usage,
                         tr("--set, --expression, --windows, --amount and --position go with "
                            "standard cores; a lite core has no trigger and captures one window "
                            "as the design has it.")};
    }
    return {};
}

CoreSetup LiteDesign::setup() const
{
    CoreSetup setup;
    if (m_manager.core())
        setup.lite = *m_manager.core();
    setup.delay = delay();
    return setup;
}

SettingsCarry LiteDesign::carry(const CoreSetup &before)
{
    LiteCoreConfig *core = m_manager.core();
    if (!before.lite || !core)
        return lostSetup(before);
    setDelay(before.delay);
    return {delayEntry(before, CarryOutcome::Kept) + carrySettings(*before.lite, *core),
            {{before.lite->index, core->index}}};
}

QString LiteDesign::deviceOfRun(const QString &deviceModel) const
{
    return deviceModel;
}

bool LiteDesign::dependsOnDevice() const
{
    return m_manager.core() && KEO::dependsOnDevice(*m_manager.core(), m_manager.isZeo());
}

Result<RunSettings> LiteDesign::runSettings(const QString &deviceModel) const
{
    if (!m_manager.core())
        return Error{Error::Usage, tr("There is no core.")};
    if (const std::optional<Error> obstacle = captureObstacle(*m_manager.core()))
        return *obstacle;
    RunSettings settings{.cores = {TriggerOptions{.core = m_manager.core()->index}},
                         .delay = std::max(delay(), 0),
                         .device = deviceOfRun(deviceModel)};
    if (delay() < 0)
        settings.remarks.append(tr("It captures at once, and not on Force Trigger."));
    return settings;
}

void LiteDesign::start()
{
    m_manager.start(delay());
}

QList<QBitArray> LiteDesign::startWords() const
{
    return m_manager.startWords();
}

void LiteDesign::forceTrigger()
{
    m_manager.onDelay();
}

QString LiteDesign::waitingFor() const
{
    if (m_manager.core()->active != 1)
        return {};
    return tr("the capture of core %1").arg(m_manager.core()->index);
}

std::optional<CapturedWindow> LiteDesign::take(int, int window, const QString &deviceModel)
{
    const QPointer<LiteDesign> self(this);
    const QList<QBitArray> sections = m_manager.rawCapture();
    const LiteCoreConfig *core = self ? m_manager.core() : nullptr;
    if (!core)
        return std::nullopt;
    return CapturedWindow{KEO::exportCore(*core), window, core->signals,
                          extractSignalData(core, sections, deviceModel, m_manager.isZeo())};
}

ExportCore LiteDesign::exportCore(int core) const
{
    ExportCore exported = m_manager.core() ? KEO::exportCore(*m_manager.core()) : ExportCore();
    exported.index = core;
    return exported;
}

void LiteDesign::keepNames(int, const QMap<int, SignalNames> &names)
{
    if (LiteCoreConfig *core = m_manager.core())
        core->applySignalNames(names);
}

bool LiteDesign::fits(const LoadedWindows &windows, TriggerPosition position) const
{
    return m_manager.core() && fitsLiteCore(windows, *m_manager.core(), position);
}

std::optional<WindowPlace> LiteDesign::placeOf(const LoadedWindow &window) const
{
    const std::optional<int> number = windowNumberOf(window);
    if (!number)
        return std::nullopt;
    return WindowPlace{m_manager.core()->index, *number};
}

} // namespace KEO
