#pragma once

#include <QString>

namespace KEO {

/// Where the programs stand that are installed beside this one: the cable servers and the
/// command-line programmer. An absolute path without a slash at its end. Needs the application
/// object.
[[nodiscard]] QString siblingDirectory();

/// Path of the program \a name, given without the platform's suffix, in \a directory.
[[nodiscard]] QString programPath(const QString &directory, const QString &name);

} // namespace KEO
