#pragma once

#include "waveview.h"

#include <wave/common/mouseaction.h>

#include <QList>
#include <QPoint>
#include <QRect>

class QAction;
class QMouseEvent;

namespace WaveMonitor {

class WaveView::ActionDelegate : public MouseAction<WaveView>
{
    using MouseAction::MouseAction;
};

/// The picture follows the hand.
class WaveView::MoveWithMouseDelegate final : public ActionDelegate
{
public:
    MoveWithMouseDelegate(WaveView *view, const QPoint &position)
        : ActionDelegate(view), m_last(position)
    {
    }
    void moved(QMouseEvent *event) override;

private:
    QPoint m_last; ///< viewport pixels
};

/// Chooses a stretch of time over the full height and zooms to it on release.
class WaveView::ZoomFromRegionDelegate final : public ActionDelegate
{
public:
    ZoomFromRegionDelegate(WaveView *view, const QPoint &position)
        : ActionDelegate(view), m_pressed(position)
    {
    }
    /// Another mouse mode may take over in the middle of a drag.
    ~ZoomFromRegionDelegate() override;
    void moved(QMouseEvent *event) override;
    void released(QMouseEvent *event) override;

private:
    QPoint m_pressed; ///< viewport pixels
    QRect m_region;   ///< viewport pixels, empty while the drag is too short
};

/// The entries of the context menu.
class WaveView::ContextMenuDelegate final
{
public:
    explicit ContextMenuDelegate(WaveView *view);
    [[nodiscard]] QList<QAction *> actions() const { return {m_zoomIn, m_zoomOut, m_separator}; }

private:
    QAction *m_zoomIn;    ///< child of the view
    QAction *m_zoomOut;   ///< child of the view
    QAction *m_separator; ///< child of the view; before what others add as the view's actions
};

} // namespace WaveMonitor
