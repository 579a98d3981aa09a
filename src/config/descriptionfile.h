#pragma once

#include <base/boundedxml.h>

#include <QLoggingCategory>

namespace KEO {

/// Why a core description was refused, for the developer: the roads to the user say less.
Q_DECLARE_LOGGING_CATEGORY(lcConfig)

/// The largest description file that is read, in bytes. Real ones stay far below 1 MB.
inline constexpr qint64 kMaxDescriptionSize = 16 * 1024 * 1024;

/// What a core description of any kind may cost.
inline constexpr XmlLimits kDescriptionLimits{
    .maxSize = kMaxDescriptionSize, .maxDepth = 64, .maxAttributes = 64, .maxNodes = 500'000};

} // namespace KEO
