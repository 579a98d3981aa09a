#include "design.h"

#include "litedesign.h"
#include "standarddesign.h"

#include <capture/devicemodels.h>

#include <QFileInfo>

#include <utility>

namespace KEO {

Design::Design(DescriptionKind kind, JtagSession &session)
    : m_traits(kindTraits(kind)), m_session(session)
{
}

std::unique_ptr<Design> Design::make(DescriptionKind kind, JtagSession &session)
{
    if (kind == DescriptionKind::Lite)
        return std::make_unique<LiteDesign>(session);
    return std::make_unique<StandardDesign>(session);
}

Result<QString> Design::load(const QString &path)
{
    QString id;
    QString reason;
    if (loadCores(path, id, reason))
        return id;
    if (!QFileInfo::exists(path))
        reason = tr("Open file failed");
    return Error{Error::File, tr("%1 can not be used: %2").arg(path, reason)};
}

Result<std::optional<Design::SavedWindows>> Design::openWindows(const QString &path,
                                                                TriggerPosition position) const
{
    Result<LoadedWindows> loaded = loadDataFile(path);
    if (!loaded)
        return loaded.error();
    if (!fits(*loaded, position))
        return std::optional<SavedWindows>();
    SavedWindows windows;
    for (LoadedWindow &window : *loaded) {
        if (const std::optional<WindowPlace> place = placeOf(window))
            windows.push_back({*place, std::move(window.contents)});
    }
    return std::optional(std::move(windows));
}

QString Design::deviceDoubt(const QString &device) const
{
    if (!dependsOnDevice() || writesOneRowLate(device))
        return {};
    if (device.isEmpty())
        return tr("Unknown device: on %1 the first sample is really the newest.")
            .arg(lateModelsText());
    const QString meant = lateModelMeant(device);
    if (meant.isEmpty())
        return {};
    return tr("\"%1\" does not count as %2: if it is one, the first sample is really the newest.")
        .arg(device, meant);
}

std::optional<Rehearsal> Design::rehearse(int, const WaveMonitor::WindowContents &)
{
    return std::nullopt;
}

Error Design::unknownCore(int number)
{
    return {Error::Usage, tr("The description has no core %1.").arg(number)};
}

} // namespace KEO
