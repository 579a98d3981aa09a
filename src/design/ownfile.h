#pragma once

#include <QString>

namespace KEO {

/// Is the file at \a path a data file, going by its root element?
[[nodiscard]] bool isDataFile(const QString &path);

/// Is there no file at \a path, or an empty one? What is no file at all is taken too.
[[nodiscard]] bool isFreeForFile(const QString &path);

} // namespace KEO
