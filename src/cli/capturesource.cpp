#include "capturesource.h"

#include "litesource.h"
#include "standardsource.h"

#include <config/descriptionkind.h>

namespace KEO {

std::unique_ptr<CaptureSource> CaptureSource::forFile(const QString &path)
{
    if (!path.isEmpty() && descriptionKind(path) == DescriptionKind::Lite)
        return std::make_unique<LiteSource>();
    return std::make_unique<StandardSource>();
}

Error CaptureSource::refusal(const QString &file, const QString &reason)
{
    return {Error::File, tr("%1 can not be used: %2").arg(file, reason)};
}

} // namespace KEO
