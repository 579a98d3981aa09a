#pragma once

#include "coreconfig.h"
#include "descriptionkind.h"
#include "litecoreconfig.h"

#include <base/result.h>

#include <QByteArray>
#include <QList>
#include <QString>

namespace KEO {

/// Everything of a core description, whatever kind of core it is for.
struct LoadedDescription
{
    DescriptionKind kind = DescriptionKind::Standard;
    QString version;            ///< as the file has it
    QString id;                 ///< check value of the design; may be empty
    CoreList standard;          ///< none in a lite description
    QList<LiteCoreConfig> lite; ///< none in a standard one
};

/// The bytes of the description at \a path, to be loaded now or later. Errors are of kind File or
/// Limit and name the file.
[[nodiscard]] Result<QByteArray> descriptionBytes(const QString &path);

/// Loads a description of either kind; one without a core is an error here.
[[nodiscard]] Result<LoadedDescription> loadDescription(const QByteArray &bytes);

} // namespace KEO
