#include "rowhistory.h"

#include "signaltreemodel.h"
#include "signaltreeview.h"

#include <QAction>
#include <QItemSelectionModel>
#include <QKeySequence>
#include <QScopedValueRollback>
#include <QUndoCommand>

#include <utility>

namespace WaveMonitor {

namespace {

constexpr int kMaximumSteps = 100;

} // namespace

class RowHistory::Step final : public QUndoCommand
{
public:
    Step(RowHistory *history, const QString &name, State before, State after)
        : QUndoCommand(name),
          m_history(history),
          m_before(std::move(before)),
          m_after(std::move(after))
    {
    }
    void undo() override
    {
        m_isDone = false;
        m_history->show(m_before);
    }
    void redo() override
    {
        if (!std::exchange(m_isDone, true))
            m_history->show(m_after);
    }

private:
    RowHistory *m_history; // owns this object
    State m_before;
    State m_after;
    bool m_isDone = true; ///< the user has done it when the stack gets it
};

RowHistory::RowHistory(SignalTreeView *view)
    : m_view(view),
      m_undo(m_steps.createUndoAction(this, SignalTreeView::tr("Undo"))),
      m_redo(m_steps.createRedoAction(this, SignalTreeView::tr("Redo")))
{
    m_steps.setUndoLimit(kMaximumSteps);
    m_undo->setShortcut(Qt::CTRL | Qt::Key_Z);
    m_redo->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_Z);
}

void RowHistory::setModel(SignalTreeModel *model)
{
    if (m_model)
        disconnect(m_model, nullptr, this, nullptr);
    m_steps.clear();
    m_model = model;
    if (m_model)
        connect(m_model, &SignalTreeModel::rowsReplaced, &m_steps, &QUndoStack::clear);
}

void RowHistory::record(const QString &name, const std::function<void()> &action)
{
    if (!m_model || m_isRecording) {
        action();
        return;
    }
    const QScopedValueRollback recording(m_isRecording, true);
    State before = state();
    action();
    State after = state();
    if (before.layout != after.layout)
        m_steps.push(new Step(this, name, std::move(before), std::move(after)));
}

void RowHistory::recordLayout(const QString &name, const LayoutSnapshot &layout)
{
    record(name, [&] {
        const State before = state();
        showLayout(layout, {});
        m_view->selectOnly(m_model->indexesOf(before.selected));
    });
}

RowHistory::State RowHistory::state() const
{
    State state{m_model->contents().snapshot(), {}, {}};
    for (const QModelIndex &row : m_view->selectedRows())
        state.selected.insert(m_model->node(row)->key);
    for (int row = 0; row < m_model->rowCount(); ++row) {
        const QModelIndex index = m_model->index(row, 0);
        if (m_view->isExpanded(index))
            state.expanded.insert(m_model->node(index)->key);
    }
    return state;
}

void RowHistory::show(const State &state)
{
    showLayout(state.layout, state.expanded);
    m_view->selectOnly(m_model->indexesOf(state.selected));
}

/// Buses that have stood there stay open or closed; those of \a expanded come back open.
void RowHistory::showLayout(const LayoutSnapshot &layout, const QSet<LayoutNode::Key> &expanded)
{
    QSet<LayoutNode::Key> open = expanded;
    for (int row = 0; row < m_model->rowCount(); ++row) {
        const QModelIndex index = m_model->index(row, 0);
        if (m_view->isExpanded(index))
            open.insert(m_model->node(index)->key);
        else
            open.remove(m_model->node(index)->key);
    }
    const QModelIndex current = m_view->currentIndex();
    const LayoutNode::Key currentRow = current.isValid() ? m_model->node(current)->key : 0;
    m_view->clearSelection(); // a reset would not tell the wave items
    m_model->restoreLayout(layout);
    m_model->refreshItemColors();
    for (const QModelIndex &bus : m_model->indexesOf(open))
        m_view->expand(bus);
    m_view->makeCurrent(m_model->indexesOf({currentRow}).value(0), QItemSelectionModel::NoUpdate);
}

} // namespace WaveMonitor
