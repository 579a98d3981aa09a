#pragma once

#include "waveoverlay.h"
#include "wheelnotches.h"

#include <wave/common/localized.h>
#include <wave/common/notificationcenter.h>

#include <QGraphicsView>
#include <QList>
#include <QPoint>
#include <QRect>

#include <memory>
#include <optional>

namespace WaveMonitor {

/// The right-hand pane: one item a row, zooming and panning, and the overlays above the scene (the
/// trigger line, the marker lines, the rubber band of a region zoom). It knows rows only through
/// its data source and takes all its cues from notifications.
class WaveView final : public QGraphicsView, public Localized
{
    Q_OBJECT
    Q_PROPERTY(qreal zoomRate READ zoomRate)
    Q_PROPERTY(quint64 domain READ domain)
    Q_PROPERTY(int horizontalScrollBarValue READ horizontalScrollBarValue)

public:
    /// Where rows come from.
    class DataSourceProtocol
    {
    public:
        virtual ~DataSourceProtocol() = default;
        /// Brings the items up to date with the rows and gives all of them in row order, those of
        /// collapsed members too (invisible). The source keeps ownership.
        virtual QList<QGraphicsItem *> waveItems() = 0;
        /// The same for its effect alone.
        virtual void relayoutItems() = 0;
        /// Sample index of the trigger.
        virtual int triggerPosition() = 0;
        /// The user pressed on an item, or on empty space (null).
        virtual void itemPressed(QGraphicsItem *item) = 0;
        /// The rows that are not hidden in a bus, in order; only asked for an overlay.
        virtual QList<const LayoutNode *> shownRows() { return {}; }
    };

    class ActionDelegate;
    class MoveWithMouseDelegate;
    class ZoomFromRegionDelegate;
    class ContextMenuDelegate;

    explicit WaveView(QWidget *parent = nullptr);
    ~WaveView() override;

    /// Borrowed; set once, before any event.
    void setDataSource(DataSourceProtocol *source);
    [[nodiscard]] qreal zoomRate() const { return m_zoomRate; }
    /// The only writer of the rate; bounds are the caller's.
    void setZoomRate(qreal rate);
    [[nodiscard]] int horizontalScrollBarValue() const;
    /// Pixels from sample 0 to the left edge. The scroll bar tells them as long as it can move.
    [[nodiscard]] int left() const;
    /// Empty space, in samples, before the first and after the last one, to scroll into.
    void setRoom(int before, int after);
    /// Painted over the waves; null takes it away. Borrowed.
    void setOverlay(const WaveOverlay *overlay);

    /// Brings the start of a sample to the middle, as far as there are samples to both sides. Holds
    /// over changes of size and zoom until the view is moved, so it may come before the first one.
    void centreOn(int sample);
    /// The sample in the middle.
    [[nodiscard]] int middleSample() const;
    /// Where in the viewport the context menu came up that is open, if it was by the mouse.
    [[nodiscard]] std::optional<QPoint> menuPlace() const { return m_menuPlace; }
    /// Do all of a sample's first pixels show?
    [[nodiscard]] bool isInView(int sample) const;

    Q_INVOKABLE QString handleEvents(Notification *e);

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private Q_SLOTS:
    void hScrollBarValueChanged(int value);
    void zoomForRect(QRect rect);
    void zoomIn();
    void zoomOut();

private:
    /// How far the scene has caught up with the rows.
    enum class Fresh { Nothing, Layout, Items };

    class AnchorOff;

    /// What keeps its place in a zoom: a point (viewport pixels) or the middle.
    using Anchor = std::optional<int>;
    void zoomAbout(Anchor anchor, qreal rate);
    [[nodiscard]] Anchor pointerAnchor() const;
    [[nodiscard]] qreal middle() const;
    void placeMiddle(qreal x);
    [[nodiscard]] bool keepsMiddle() const;

    void refresh(Fresh what);
    void addItems();
    void relayoutItems();
    void removeAllItems();
    void fitScene(const QList<QGraphicsItem *> &items);
    void setSceneExtent(qreal height);
    void takeMarkers(const QObject &ruler);
    void setMasks(const QRect &left, const QRect &right);
    void drawTrigger() const;
    void drawMarkers() const;
    void drawMasks() const;
    void drawOverlay() const;

    QRect m_leftMask;         ///< viewport pixels, empty when no region is being chosen
    QRect m_rightMask;        ///< viewport pixels
    QList<int> m_timeMarkers; ///< samples of the markers, taken when told: a handle may die sooner
    DataSourceProtocol *m_dataSource = nullptr;
    const WaveOverlay *m_overlay = nullptr;
    qreal m_dataWidth = 0.0;                          ///< scene units; as wide as the first rows
    int m_roomBefore = 0;                             ///< samples
    int m_roomAfter = 0;                              ///< samples
    std::unique_ptr<ActionDelegate> m_actionDelegate; ///< present mouse mode
    std::unique_ptr<ContextMenuDelegate> m_contextMenu;
    std::optional<QPoint> m_menuPlace;
    qreal m_zoomRate = 1.0;
    qreal m_middle = 0.0;     ///< scene x that was put in the middle; bars count whole pixels
    int m_middleBar = -1;     ///< the bar's value when that was done
    bool m_isCentred = false; ///< the middle was asked for
    WheelNotches m_notches;
    Fresh m_fresh = Fresh::Nothing; ///< with all changes of events that are still queued
};

} // namespace WaveMonitor
