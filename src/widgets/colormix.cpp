#include "colormix.h"

namespace KEO {

QColor mixed(const QColor &base, const QColor &added, qreal share)
{
    const auto part = [share](float from, float to) { return from + (to - from) * float(share); };
    return QColor::fromRgbF(part(base.redF(), added.redF()), part(base.greenF(), added.greenF()),
                            part(base.blueF(), added.blueF()));
}

QColor faultColor(const QColor &background)
{
    constexpr int kMiddle = 128;
    return qGray(background.rgb()) < kMiddle ? QColor(0xFF8080) : QColor(0xC00000);
}

} // namespace KEO
