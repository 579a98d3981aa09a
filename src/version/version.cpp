#include "version.h"

#include "commit.h"

#include <QLatin1String>

namespace KEO {

QString versionText()
{
    constexpr QLatin1String version(SIGNALSCOPE_VERSION);
    constexpr QLatin1String commit(SIGNALSCOPE_COMMIT);
    return commit.isEmpty() ? QString(version) : QStringLiteral("%1 (%2)").arg(version, commit);
}

} // namespace KEO
