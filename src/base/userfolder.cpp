#include "userfolder.h"

#include <QStandardPaths>

namespace KEO {

// Not the program's own location: the two programs differ in their names.
QString userDataFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/signalscope");
}

} // namespace KEO
