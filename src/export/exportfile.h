#pragma once

#include <base/wholefile.h>

#include <QString>

namespace KEO {

/// Replaces \a path with what \a write writes, which returns success; after false the file that was
/// there is as before, and `errno` tells the system's reason.
template <typename Write>
[[nodiscard]] bool writeExportFile(const QString &path, Write write)
{
    return !writeWholeFile(path, LineEnds::Native, write);
}

} // namespace KEO
