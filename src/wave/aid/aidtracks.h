#pragma once

#include <wave_data/aidrow.h>

#include <QAbstractScrollArea>
#include <QList>
#include <QPixmap>

class QHelpEvent;

namespace WaveMonitor {

/// The traces of rows beside those of the window: a level where it is known, hatched where it is
/// not. Stands above the waves, as wide as they are, and shows the same samples. Has no focus.
class AidTracks final : public QAbstractScrollArea
{
    Q_OBJECT

public:
    explicit AidTracks(QWidget *parent = nullptr);

    void setRows(const AidRows &rows);
    void setSamples(qsizetype samples);
    /// What of the waves shows, in viewport pixels.
    struct Span
    {
        qreal left = 0.0; ///< of sample 0; negative once the view has scrolled
        qreal pitch = 1.0;
        bool operator==(const Span &other) const = default;
    };
    void setSpan(const Span &span);
    /// The lines across the waves, which go on here. Samples.
    void setLines(int trigger, const QList<int> &markers);
    /// Pixels that all rows take.
    [[nodiscard]] int fullHeight() const;
    /// Is there more than shows?
    [[nodiscard]] bool scrolls() const;

protected:
    bool viewportEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    void redraw();
    void fitBar();
    void drawTraces();
    void showTip(const QHelpEvent &event);

    AidRows m_rows;
    qsizetype m_samples = 0;
    Span m_span;
    int m_trigger = 0;
    QList<int> m_markers;
    QPixmap m_picture; ///< of the traces that show; null when it has to be drawn
};

} // namespace WaveMonitor
