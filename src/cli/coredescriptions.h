#pragma once

#include <base/result.h>
#include <config/coreconfig.h>
#include <config/litecoreconfig.h>

#include <QString>

namespace KEO {

/// The cores of the description at \a path, at least one; or, in words for the user, why none of
/// them can be used.
Result<CoreList> loadStandardCores(const QString &path);

/// The same for a description of a lite core, which is always alone.
Result<LiteCoreConfig> loadLiteCore(const QString &path);

/// What is told of a description that can't be used for \a reason. Of kind File.
Error descriptionRefusal(const QString &path, const QString &reason);

} // namespace KEO
