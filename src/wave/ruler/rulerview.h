#pragma once

#include <wave/common/localized.h>
#include <wave/common/notificationcenter.h>
#include <wave/common/timesliderdata.h>
#include <wave_data/samplesearch.h>

#include <QGraphicsView>
#include <QList>

#include <memory>
#include <optional>
#include <vector>

class QAction;

namespace WaveMonitor {

class ScaleRuler;
class TimeSliderItem;

/// The band above the wave view: a scale of sample numbers, and above it the time markers, which
/// the user plants with the context menu or a double click and drags along the samples. Counts
/// samples from 0; the trigger does not shift them. Zoom and horizontal position follow the wave
/// view by notifications.
class RulerView final : public QGraphicsView, public Localized
{
    Q_OBJECT
    Q_PROPERTY(qreal zoomRate READ zoomRate)
    Q_PROPERTY(quint64 domain READ domain)
    Q_PROPERTY(QList<WaveMonitor::TimeSliderData *> timeMarkers READ timeMarkers)
    Q_PROPERTY(WaveMonitor::TimeSliderData *timeMarker READ timeMarker)

public:
    class ActionDelegate;
    class MoveTimeSliderDelegate;

    explicit RulerView(QWidget *parent = nullptr);
    ~RulerView() override;

    /// Number of samples on the scale. Markers stay where they are.
    void setClocks(int clocks);
    /// Empty space, in samples, before the first and after the last one, to scroll into.
    void setRoom(int before, int after);
    [[nodiscard]] qreal zoomRate() const { return m_zoomRate; }
    /// The markers, the active one first. The ruler keeps ownership and may delete a marker after
    /// any event 10, so receivers take from the handles what they need while they handle an event.
    [[nodiscard]] QList<TimeSliderData *> timeMarkers() const;
    /// The active marker, or null.
    [[nodiscard]] TimeSliderData *timeMarker() const;
    /// Makes an active marker on a sample, or the one that stands there active; nothing happens
    /// without samples.
    void plantMarker(int clock);
    /// Takes the active marker away; nothing happens without one.
    void removeActiveMarker();
    /// Puts the active marker on a sample; nothing happens without a marker or without samples.
    void moveActiveMarker(int clock);
    /// Makes the marker on a sample the active one; nothing happens if none stands there.
    void activateMarkerAt(int clock);
    /// Samples that were found, as ticks at the foot of the scale; the current one stands out.
    void setHits(const SampleHits &hits, std::optional<int> current);
    /// Hits of a row beside those of the window, as ticks at the top of the scale.
    void setAidHits(const SampleHits &hits, std::optional<int> current);

    Q_INVOKABLE void handleEvents(Notification *e);

    [[nodiscard]] QSize sizeHint() const override;

Q_SIGNALS:
    /// A marker is dragged at the edge: the waves should move by that many pixels.
    void scrollAsked(int pixels);

protected:
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void createMarker(int clock);
    void removeMarker(QGraphicsItem *item);
    void activateMarker(TimeSliderItem *item);
    void moveMarker(TimeSliderItem *item, int clock);
    void applyZoomRate(qreal rate);
    void followScene();
    [[nodiscard]] int nearestClock(const QPoint &position) const;

    std::unique_ptr<ActionDelegate> m_actionDelegate; ///< present drag
    ScaleRuler *m_scaleRuler;                         ///< owned by the scene
    qreal m_zoomRate = 1.0;
    int m_roomBefore = 0;                                       ///< samples
    int m_roomAfter = 0;                                        ///< samples
    std::vector<std::unique_ptr<TimeSliderData>> m_timeMarkers; ///< the active one first
    QAction *m_createAction;                                    ///< child
    QAction *m_removeAction;                                    ///< child
};

} // namespace WaveMonitor
