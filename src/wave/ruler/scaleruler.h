#pragma once

#include <wave_data/samplesearch.h>

#include <QGraphicsItem>

#include <optional>

namespace WaveMonitor {

/// How far apart the ticks of the scale stand, in samples.
struct TickSpacing
{
    int major = 1; ///< long ticks with a number, at its multiples
    int minor = 1; ///< short ticks, one sample past its multiples; 1 means none

    bool operator==(const TickSpacing &other) const = default;
};

/// The spacing for a scale of \a zoom: 1, 2, 5, 10, ... samples as the zoom halves.
TickSpacing tickSpacing(qreal zoom);

/// How far apart numbers of \a width pixels stand on ticks that are \a major samples and \a
/// distance pixels apart, in samples: at each one, or at each second, fifth, tenth, ...
int labelSpacing(int major, qreal distance, qreal width);

/// The band that numbers the samples, from sample 0 at scene x 0 on, in the scene coordinates of
/// viewergeometry.h. Draws what the exposed rectangle needs.
class ScaleRuler final : public QGraphicsItem
{
public:
    ScaleRuler();

    /// Number of samples.
    [[nodiscard]] int clocks() const { return m_clocks; }
    void setClocks(int clocks);
    /// Ticks at the foot of the scale, one a pixel at most; \a current crosses it.
    void setHits(const SampleHits &hits, std::optional<int> current);
    /// The same at the top of the scale and in another colour, beside them.
    void setAidHits(const SampleHits &hits, std::optional<int> current);

    [[nodiscard]] QRectF boundingRect() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option,
               QWidget *widget = nullptr) override;

private:
    struct Ticks
    {
        SampleHits hits;
        std::optional<int> current;
    };

    int m_clocks = 0;
    Ticks m_found;
    Ticks m_aid;
};

} // namespace WaveMonitor
