#pragma once

#include "signaltreeview.h"
#include "treeproxystyle.h"

#include <QList>
#include <QPersistentModelIndex>
#include <QPoint>

#include <optional>

namespace WaveMonitor {

/// One drag of rows within their parent, from its start to the drop. Shows the place of the drop
/// through a style that it sets on the view while it lives.
class DragDropDelegate final : public SignalTreeView::ActionDelegate
{
public:
    /// Where the rows go, seen from the target row.
    enum class Position : int {
        Invalid = -1,
        OnItem = 0,
        Above = 1,
        Below = 2,
        Prepend = 3, ///< first under the target
        Append = 4,  ///< last under the target
        OnViewport = 5
    };

    /// Moves the rows that are selected now.
    DragDropDelegate(SignalTreeView *view, SignalTreeModel *model);
    ~DragDropDelegate() override;

    void dragEnter(QDragEnterEvent *event) override;
    void dragLeave(QDragLeaveEvent *event) override;
    void dragMove(QDragMoveEvent *event) override;
    void drop(QDropEvent *event) override;

private:
    /// Finds the place of the drop for the mouse at \a point; false where nothing may be dropped.
    bool lookAt(const QPoint &point);
    [[nodiscard]] bool isMoved(const QModelIndex &index) const;
    [[nodiscard]] bool mayDropBeside(const QModelIndex &target) const;
    [[nodiscard]] QRect blockRect(const QModelIndex &target) const;
    [[nodiscard]] QModelIndex rowAt(const QPoint &point) const;
    void leaveMovedRows();
    QModelIndexList moveRows();
    void setPlace(Position position, const QModelIndex &target, TreeProxyStyle::Mode line);

    bool m_enabled = true;
    TreeProxyStyle m_style;
    QList<QPersistentModelIndex> m_moved; ///< the model may change in the middle of a drag
    bool m_movedHasBus = false;
    SignalTreeModel *m_model;      ///< borrowed
    std::optional<QPoint> m_mouse; ///< viewport pixels; none while the drag is elsewhere
    Position m_position = Position::Invalid;
    QPersistentModelIndex m_target;
};

} // namespace WaveMonitor
