#pragma once

#include <QColor>

namespace KEO {

/// \a base with \a share (0 to 1) of \a added in it.
[[nodiscard]] QColor mixed(const QColor &base, const QColor &added, qreal share);

/// For text that tells of a fault, legible on \a background.
[[nodiscard]] QColor faultColor(const QColor &background);

} // namespace KEO
