#pragma once

#include "waveoverlay.h"

#include <wave/common/localized.h>
#include <wave/common/notificationcenter.h>

#include <QGraphicsView>
#include <QList>
#include <QRect>

#include <memory>

class QAction;

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
    /// Entries of the context menu behind a separator. Borrowed until they are removed.
    void addMenuAction(QAction *action);
    void removeMenuAction(QAction *action);
    /// Painted over the waves; null takes it away. Borrowed.
    void setOverlay(const WaveOverlay *overlay);

    Q_INVOKABLE QString handleEvents(Notification *e);

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private Q_SLOTS:
    void hScrollBarValueChanged(int value);
    void zoomForRect(QRect rect);
    void zoomIn();
    void zoomOut();

private:
    /// How far the scene has caught up with the rows.
    enum class Fresh { Nothing, Layout, Items };

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
    QList<QAction *> m_menuActions;
    qreal m_dataWidth = 0.0;                          ///< scene units; as wide as the first rows
    int m_roomBefore = 0;                             ///< samples
    int m_roomAfter = 0;                              ///< samples
    std::unique_ptr<ActionDelegate> m_actionDelegate; ///< present mouse mode
    std::unique_ptr<ContextMenuDelegate> m_contextMenu;
    qreal m_zoomRate = 1.0;
    Fresh m_fresh = Fresh::Nothing; ///< with all changes of events that are still queued
};

} // namespace WaveMonitor
