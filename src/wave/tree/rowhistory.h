#pragma once

#include <wave_data/layoutsnapshot.h>

#include <QObject>
#include <QSet>
#include <QString>
#include <QUndoStack>

#include <functional>
#include <memory>

class QAction;

namespace WaveMonitor {

class SignalTreeModel;
class SignalTreeView;

/// What the user did to the rows of one viewer, step by step, to be taken back and done again. A
/// step is the rows before and after it, without samples, so new samples make no difference. The
/// steps are forgotten when rows come from outside.
class RowHistory final : public QObject
{
    Q_OBJECT

public:
    explicit RowHistory(SignalTreeView *view);

    /// Null forgets everything, another model as well. Borrowed.
    void setModel(SignalTreeModel *model);
    /// Does \a action and keeps it as one step called \a name, unless it changed no row. Steps
    /// within a step are part of it.
    void record(const QString &name, const std::function<void()> &action);
    /// Does as one step what makes the rows those of \a layout.
    void recordLayout(const QString &name, const LayoutSnapshot &layout);

    [[nodiscard]] QAction *undoAction() const { return m_undo; }
    [[nodiscard]] QAction *redoAction() const { return m_redo; }

private:
    /// The rows, and how the tree shows them.
    struct State
    {
        LayoutSnapshot layout;
        QSet<LayoutNode::Key> selected;
        QSet<LayoutNode::Key> expanded;
    };
    class Step;

    [[nodiscard]] State state() const;
    void show(const State &state);
    void showLayout(const LayoutSnapshot &layout, const QSet<LayoutNode::Key> &expanded);

    SignalTreeView *m_view;             ///< owns this object
    SignalTreeModel *m_model = nullptr; ///< borrowed
    QUndoStack m_steps;
    QAction *m_undo; ///< child
    QAction *m_redo; ///< child
    bool m_isRecording = false;
};

} // namespace WaveMonitor
