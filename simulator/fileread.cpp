#include "fileread.h"

#include <QFile>
#include <QFileInfo>

namespace Sim {

Outcome<QByteArray> readWholeFile(const QString &path, qint64 limit)
{
    QFile file(path);
    if (!QFileInfo::exists(path))
        return Failure{QStringLiteral("%1: there is no such file").arg(path)};
    if (!QFileInfo(path).isFile())
        return Failure{QStringLiteral("%1: is no regular file").arg(path)};
    if (!file.open(QIODevice::ReadOnly))
        return Failure{QStringLiteral("%1: %2").arg(path, file.errorString())};
    if (file.size() > limit)
        return Failure{QStringLiteral("%1: larger than %2 bytes").arg(path).arg(limit)};
    return file.readAll();
}

} // namespace Sim
