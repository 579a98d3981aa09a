#pragma once

#include <QFile>
#include <QString>

#include <cerrno>

namespace KEO {

/// Opens \a path for writing from its start and runs \a write on the file, which returns success.
/// Unbuffered, because the writers have a buffer of their own and must see every refusal. After
/// false, `errno` tells the system's reason.
template <typename Write>
[[nodiscard]] bool writeExportFile(const QString &path, Write write)
{
    QFile file(path);
    errno = 0;
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text |
                   QIODevice::Unbuffered))
        return false;
    const bool isWritten = write(file);
    const int reason = errno;
    file.close();
    errno = reason;
    return isWritten;
}

} // namespace KEO
