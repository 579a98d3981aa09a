#pragma once

#include <wave/view/waveoverlay.h>
#include <wave_data/windowcompare.h>

#include <QHash>
#include <QSet>

#include <optional>
#include <vector>

namespace WaveMonitor {

/// Shows in the waves of one of two compared windows where its rows differ from the other: a
/// hatched field with a bar below, and a broken line at the difference that was last gone to.
class DifferenceMarks final : public WaveOverlay
{
public:
    enum class Side { A, B };

    /// \a comparison is borrowed.
    DifferenceMarks(const WindowComparison &comparison, Side side);

    /// Ids of the signals of this side that differ.
    [[nodiscard]] QSet<int> markedSignals() const;
    /// In A's samples.
    void setCurrent(std::optional<qsizetype> sample) { m_current = sample; }

    void paint(QPainter &painter, const ShownWaves &shown) const override;

private:
    using Columns = std::vector<bool>; ///< of the viewport, true where a row differs

    void paintRow(QPainter &painter, const Columns &columns, qreal top) const;
    void addSignal(Columns &columns, const ShownWaves &shown, qsizetype position) const;

    const WindowComparison &m_comparison;
    qsizetype m_shift;                 ///< this side's sample for A's sample 0
    QHash<int, qsizetype> m_positions; ///< of signals that differ, by id of this side
    std::optional<qsizetype> m_current;
};

} // namespace WaveMonitor
