#pragma once

#include <QList>
#include <QSize>

class QPainter;

namespace WaveMonitor {

class LayoutNode;

/// What of the waves shows, in viewport pixels.
struct ShownWaves
{
    qreal pixelsPerSample = 1.0;
    qreal left = 0.0; ///< of sample 0; negative once the view has scrolled
    qreal top = 0.0;  ///< of the first row; each is ROW_HEIGHT high
    QSize size;
    QList<const LayoutNode *> rows; ///< those that are not hidden in a bus, in order
};

/// Something that is painted over the waves.
class WaveOverlay
{
public:
    virtual ~WaveOverlay() = default;
    virtual void paint(QPainter &painter, const ShownWaves &shown) const = 0;
};

} // namespace WaveMonitor
