#pragma once

#include <QString>

namespace Sim {

/// May a file of the simulated board's own, in the folder for temporary files, be read and written
/// at \a path? Other users can put something there first: a link would lead to any file of this
/// user's. Only a regular file that is this user's will do, or none.
[[nodiscard]] bool isOursToUse(const QString &path);

} // namespace Sim
