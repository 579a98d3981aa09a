#include "legiblecolor.h"

#include <cmath>
#include <utility>

namespace KEO {

namespace {

constexpr qreal kEnough = 4.5; // contrast
constexpr int kStep = 4;       // of 255 levels of lightness

qreal linear(qreal level)
{
    return level <= 0.04045 ? level / 12.92 : std::pow((level + 0.055) / 1.055, 2.4);
}

qreal luminance(const QColor &color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

} // namespace

qreal contrast(const QColor &a, const QColor &b)
{
    qreal light = luminance(a);
    qreal dark = luminance(b);
    if (light < dark)
        std::swap(light, dark);
    return (light + 0.05) / (dark + 0.05);
}

QColor legibleColor(const QColor &color, const QColor &background)
{
    const bool isOnDark = contrast(background, Qt::white) > contrast(background, Qt::black);
    const int step = isOnDark ? kStep : -kStep;
    QColor legible = color;
    for (int level = color.lightness(); contrast(legible, background) < kEnough; level += step) {
        if (level < 0 || level > 255)
            return isOnDark ? Qt::white : Qt::black;
        legible.setHsl(color.hslHue(), color.hslSaturation(), level);
    }
    return legible;
}

} // namespace KEO
