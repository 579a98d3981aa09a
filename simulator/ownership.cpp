#include "ownership.h"

#include <QFileInfo>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace Sim {

bool isOursToUse(const QString &path)
{
    const QFileInfo present(path);
    if (present.isSymLink())
        return false;
    if (!present.exists())
        return true;
#ifdef Q_OS_UNIX
    return present.isFile() && present.ownerId() == geteuid();
#else
    return present.isFile();
#endif
}

} // namespace Sim
