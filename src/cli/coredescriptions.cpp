#include "coredescriptions.h"

#include <config/descriptionkind.h>
#include <config/liteconfig.h>
#include <config/standardconfig.h>

#include <QCoreApplication>

namespace KEO {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("CoreDescriptions", text);
}

} // namespace

Result<CoreList> loadStandardCores(const QString &path)
{
    QString reason;
    CoreList cores = loadStandardConfigFile(path, nullptr, nullptr, &reason);
    if (!cores.empty() && descriptionKind(path) == DescriptionKind::Unknown)
        reason = tr("Its mode is neither Standard nor Lite.");
    else if (!cores.empty())
        return cores;
    if (reason.isEmpty())
        reason = tr("It describes no standard analyzer core.");
    return descriptionRefusal(path, reason);
}

Result<LiteCoreConfig> loadLiteCore(const QString &path)
{
    QString reason;
    const QList<LiteCoreConfig> cores = loadLiteConfigFile(path, nullptr, nullptr, &reason);
    if (cores.size() == 1)
        return cores.first();
    if (reason.isEmpty())
        reason = tr("It describes %1 lite cores; exactly one can be used.").arg(cores.size());
    return descriptionRefusal(path, reason);
}

Error descriptionRefusal(const QString &path, const QString &reason)
{
    return {Error::File, tr("%1 can not be used: %2").arg(path, reason)};
}

} // namespace KEO
