#include "litesource.h"

#include "coredescriptions.h"

#include <config/capturelimits.h>
#include <design/capturedisplay.h>
#include <design/exportcore.h>

namespace KEO {

LiteSource::LiteSource()
{
    connect(&m_manager, &KeoLiteDataManager::readRamComplete, this,
            [this] { Q_EMIT captured(m_manager.core()->index, 0); });
}

std::optional<Error> LiteSource::prepare(const CaptureOptions &options)
{
    // The data manager only says that nothing came of it; the loader knows why.
    const Result<LiteCoreConfig> loaded = loadLiteCore(options.file);
    if (!loaded)
        return loaded.error();
    QString id;
    if (!m_manager.load(options.file, id))
        return descriptionRefusal(options.file, tr("It has changed just now."));
    const LiteCoreConfig &core = *m_manager.core();
    for (const int number : options.cores) {
        if (number != core.index)
            return Error{Error::Usage, tr("The description has no core %1.").arg(number)};
    }
    if (std::optional<Error> obstacle = captureObstacle(core))
        return obstacle;
    m_manager.setDeviceName(options.device);
    m_delay = options.delay.value_or(0);
    return {};
}

void LiteSource::start()
{
    m_manager.start(m_delay);
}

void LiteSource::forceTrigger()
{
    m_manager.onDelay();
}

QString LiteSource::waitingFor() const
{
    if (m_manager.core()->active != 1)
        return {};
    return tr("the capture of core %1").arg(m_manager.core()->index);
}

CapturedWindow LiteSource::take(int, int)
{
    const QList<QBitArray> sections = m_manager.rawCapture();
    const LiteCoreConfig *core = m_manager.core();
    if (!core)
        return {};
    return {ExportMode::Lite, exportCore(*core), core->signals,
            extractSignalData(core, sections, m_manager.deviceName(), m_manager.isZeo())};
}

} // namespace KEO
