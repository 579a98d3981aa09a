#include "images.h"

#include <QIcon>

namespace KEO {

QIcon programIcon()
{
    QIcon icon(QStringLiteral(":/keo/image/chip_tarno.png"));
    for (const int size : {16, 24, 32, 48, 256})
        icon.addFile(QStringLiteral(":/keo/image/chip_tarno_%1.png").arg(size));
    return icon;
}

} // namespace KEO
