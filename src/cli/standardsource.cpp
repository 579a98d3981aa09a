#include "standardsource.h"

#include "coredescriptions.h"

#include <config/capturelimits.h>
#include <design/capturedisplay.h>
#include <design/exportcore.h>

#include <algorithm>

namespace KEO {

StandardSource::StandardSource()
{
    connect(&m_manager, &KeoStandardDataManager::readRamComplete, this, &CaptureSource::captured);
}

std::optional<Error> StandardSource::prepare(const CaptureOptions &options)
{
    if (options.delay)
        return Error{Error::Usage, tr("--delay goes with a lite core; these wait for a trigger.")};
    if (const std::optional<Error> error = load(options.file))
        return error;
    m_manager.setDeviceName(options.device);
    return chooseCores(options);
}

std::optional<Error> StandardSource::load(const QString &file)
{
    // The data manager only says that nothing came of it; the loader knows why.
    const Result<CoreList> loaded = loadStandardCores(file);
    if (!loaded)
        return loaded.error();
    QString id;
    if (!m_manager.load(file, id))
        return descriptionRefusal(file, tr("It has changed just now."));
    for (const auto &core : m_manager.cores())
        core->ensureExpressionFlags(); // nobody chooses among them here
    return {};
}

std::optional<Error> StandardSource::chooseCores(const CaptureOptions &options)
{
    const CoreList &cores = m_manager.cores();
    QList<int> positions;
    for (const int number : options.cores) {
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
        if (std::optional<Error> obstacle = captureObstacle(*cores[size_t(position)]))
            return obstacle;
    }
    if (options.autoRounds &&
        (positions.size() > 1 || cores[size_t(positions.first())]->window_num != 1))
        return Error{Error::Usage, tr("--auto takes one core with one window.")};
    m_positions = positions;
    return {};
}

int StandardSource::windowCount() const
{
    int windows = 0;
    for (const int position : m_positions)
        windows += m_manager.cores()[size_t(position)]->window_num;
    return windows;
}

void StandardSource::start()
{
    m_manager.start(m_positions);
}

void StandardSource::forceTrigger()
{
    m_manager.forceTrigger();
}

QString StandardSource::waitingFor() const
{
    QStringList cores;
    for (const CoreConfig *core : m_manager.activeCores()) {
        if (core->active == 1)
            cores.append(QString::number(core->index));
    }
    return cores.isEmpty() ? QString()
                           : tr("the trigger of core %1").arg(cores.join(QStringLiteral(", ")));
}

CapturedWindow StandardSource::take(int core, int window)
{
    const QList<QBitArray> sections = m_manager.rawWindow(window);
    const CoreConfig *config = m_manager.coreByIndex(core);
    if (!config)
        return {};
    return {ExportMode::Standard, exportCore(*config), config->signals,
            extractSignalData(config, sections)};
}

} // namespace KEO
