#pragma once

#include <QColor>

namespace KEO {

/// How well two colours can be told apart, from 1 to 21: the contrast ratio of the accessibility
/// guidelines for web contents (WCAG 2.1).
[[nodiscard]] qreal contrast(const QColor &a, const QColor &b);

/// \a color, made darker or lighter until text in it can be read on \a background: at a contrast of
/// 4.5 at least. The hue stays.
[[nodiscard]] QColor legibleColor(const QColor &color, const QColor &background);

} // namespace KEO
