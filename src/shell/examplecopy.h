#pragma once

#include <base/result.h>

#include <QString>

namespace KEO {

/// Folder of the user's documents where copies of the example stand. Need not exist.
[[nodiscard]] QString exampleFolder();

/// Path of the user's own copy of the \a description of the example, in exampleFolder(), so that it
/// can be changed and saved. The copy of another time stays as it is now, with the user's settings;
/// one of another design, as of an older version of the example, stays beside the new one.
[[nodiscard]] Result<QString> copyOfExample(const QString &description);

} // namespace KEO
