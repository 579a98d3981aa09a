#pragma once

#include <QFile>
#include <QString>

namespace KEO {

/// Opens \a path for writing from its start and runs \a write on the file, which returns success.
/// Unbuffered, because the writers have a buffer of their own and must see every refusal.
template <typename Write>
[[nodiscard]] bool writeExportFile(const QString &path, Write write)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text |
                     QIODevice::Unbuffered) &&
           write(file);
}

} // namespace KEO
