#include "dragdropdelegate.h"

#include "signaltreemodel.h"

#include <wave_data/layoutnode.h>

#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QScrollBar>
#include <QtDebug>

#include <utility>

namespace WaveMonitor {

namespace {

using Position = DragDropDelegate::Position;

const char *positionText(Position position)
{
    switch (position) {
    case Position::Invalid:
        return "Invalid";
    case Position::OnItem:
        return "OnItem";
    case Position::Above:
        return "Above";
    case Position::Below:
        return "Below";
    case Position::Prepend:
        return "Prepend";
    case Position::Append:
        return "Append";
    case Position::OnViewport:
        return "OnViewport";
    }
    return "";
}

QModelIndex siblingAtDistance(const QModelIndex &index, int rows)
{
    return index.sibling(index.row() + rows, index.column());
}

} // namespace

DragDropDelegate::DragDropDelegate(SignalTreeView *view, SignalTreeModel *model)
    : ActionDelegate(view), m_model(model)
{
    for (const QModelIndex &index : view->selectedRows()) {
        m_moved.append(index);
        m_movedHasBus = m_movedHasBus || model->node(index)->type == LayoutNode::Bus;
    }
    m_style.setEnabled(true);
    view->setStyle(&m_style);
    // At its edges the list scrolls by itself, below a mouse that stands still.
    QObject::connect(view->verticalScrollBar(), &QScrollBar::valueChanged, &m_style, [this] {
        if (m_mouse)
            lookAt(*m_mouse);
    });
}

DragDropDelegate::~DragDropDelegate()
{
    view()->setStyle(nullptr);
}

void DragDropDelegate::dragEnter(QDragEnterEvent *)
{
    m_enabled = true;
    m_style.setEnabled(true);
}

void DragDropDelegate::dragLeave(QDragLeaveEvent *)
{
    m_enabled = false;
    m_mouse.reset();
    m_style.setEnabled(false);
    m_style.setMode(TreeProxyStyle::Mode::NoLine);
    view()->viewport()->update();
}

void DragDropDelegate::dragMove(QDragMoveEvent *event)
{
    if (!m_enabled)
        return;
    m_mouse = event->position().toPoint();
    if (lookAt(*m_mouse))
        return;
    event->setDropAction(Qt::IgnoreAction);
    event->ignore();
}

bool DragDropDelegate::lookAt(const QPoint &point)
{
    const QModelIndex target = rowAt(point);
    if (!mayDropBeside(target)) {
        setPlace(Position::Invalid, {}, TreeProxyStyle::Mode::NoLine);
        return false;
    }
    if (!target.isValid()) {
        const QModelIndex last = m_model->index(m_model->rowCount() - 1, 0);
        m_style.setRect(view()->visualRect(last));
        setPlace(Position::OnViewport, {}, TreeProxyStyle::Mode::UnderRow);
        return true;
    }
    const QRect rect = blockRect(target);
    m_style.setRect(rect);
    if (point.y() - rect.top() >= rect.height() / 2)
        setPlace(Position::Below, rowAt({point.x(), rect.bottom() - 1}),
                 TreeProxyStyle::Mode::UnderRow);
    else
        setPlace(Position::Above, rowAt({point.x(), rect.top() + 1}),
                 TreeProxyStyle::Mode::OverRow);
    return true;
}

void DragDropDelegate::drop(QDropEvent *event)
{
    if (event->dropAction() == Qt::IgnoreAction || !m_enabled)
        return;
    lookAt(event->position().toPoint());
    m_mouse.reset();
    m_style.setEnabled(false);
    m_style.setMode(TreeProxyStyle::Mode::NoLine);
    leaveMovedRows();
    qDebug() << "drop " << positionText(m_position) << ": " << QModelIndex(m_target);
    view()->selectOnly(moveRows());
}

/// A target among the moved rows stands for its neighbour, or for its parent's end when there is
/// none. What begins above such a row can end below another.
void DragDropDelegate::leaveMovedRows()
{
    if (m_position == Position::Above && isMoved(m_target)) {
        const QModelIndex above = siblingAtDistance(m_target, -1);
        m_position = above.isValid() ? Position::Below : Position::Prepend;
        m_target = above.isValid() ? above : QModelIndex(m_target).parent();
    }
    if (m_position == Position::Below && isMoved(m_target)) {
        const QModelIndex below = siblingAtDistance(m_target, 1);
        m_position = below.isValid() ? Position::Above : Position::Append;
        m_target = below.isValid() ? below : QModelIndex(m_target).parent();
    }
    if (m_position == Position::OnViewport) {
        m_position = Position::Append;
        m_target = QModelIndex();
    }
}

QModelIndexList DragDropDelegate::moveRows()
{
    QModelIndexList moved;
    for (const QPersistentModelIndex &index : std::as_const(m_moved)) {
        if (index.isValid())
            moved.append(index);
    }
    switch (m_position) {
    case Position::Above:
        return m_model->moveAbove(m_target, moved);
    case Position::Below:
        return m_model->moveBelow(m_target, moved);
    case Position::Prepend:
        return m_model->movePrepend(m_target, moved);
    case Position::Append:
        return m_model->moveAppend(m_target, moved);
    default:
        return {};
    }
}

bool DragDropDelegate::isMoved(const QModelIndex &index) const
{
    return m_moved.contains(index);
}

/// Rows only move within their parent. Empty space counts as the top level.
bool DragDropDelegate::mayDropBeside(const QModelIndex &target) const
{
    return !(target.parent().isValid() && m_movedHasBus) && !m_moved.isEmpty() &&
           target.parent() == m_moved.first().parent();
}

/// The place of a row in the viewport; moved rows that stand side by side count as one.
QRect DragDropDelegate::blockRect(const QModelIndex &target) const
{
    QRect rect = view()->visualRect(target);
    if (!isMoved(target))
        return rect;
    for (const int direction : {-1, 1}) {
        for (QModelIndex next = siblingAtDistance(target, direction);
             next.isValid() && isMoved(next); next = siblingAtDistance(next, direction))
            rect |= view()->visualRect(next);
    }
    return rect;
}

/// The name cell of the row at a viewport position.
QModelIndex DragDropDelegate::rowAt(const QPoint &point) const
{
    return view()->indexAt(point).siblingAtColumn(SignalTreeModel::NameColumn);
}

void DragDropDelegate::setPlace(Position position, const QModelIndex &target,
                                TreeProxyStyle::Mode line)
{
    m_position = position;
    m_target = target;
    m_style.setMode(line);
    view()->viewport()->update();
}

} // namespace WaveMonitor
