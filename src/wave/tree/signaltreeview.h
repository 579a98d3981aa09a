#pragma once

#include <wave/common/localized.h>

#include <QElapsedTimer>
#include <QItemSelectionModel>
#include <QModelIndex>
#include <QPointer>
#include <QTreeView>

#include <memory>

class QAction;

namespace WaveMonitor {

class RowHistory;
class SignalTreeModel;

/// The left-hand pane: names and values of the rows, each exactly as high as its wave row. The user
/// selects, groups, renames, recolours, hides and drags rows here, and takes each step back.
/// Letters typed find a row by its name. It has a domain but hears no notifications: the model
/// tells it when to repaint.
class SignalTreeView final : public QTreeView, public Localized
{
    Q_OBJECT
    Q_PROPERTY(quint64 domain READ domain)

public:
    class ActionDelegate;
    class ContextMenuDelegate;

    /// \a preferredWidth in pixels.
    explicit SignalTreeView(QWidget *parent, int preferredWidth);
    ~SignalTreeView() override;

    /// Borrowed; also makes this the view that the model asks.
    void setModel(QAbstractItemModel *model) override;
    void setDomain(const quint64 &domain) override;
    [[nodiscard]] QSize sizeHint() const override;
    /// Width of the Value column as it was set, in pixels. It shows wider where the pane has room.
    [[nodiscard]] int valueWidth() const { return m_valueWidth; }

    /// The name cells of the selected rows, ascending by row (rows of several parents mixed).
    [[nodiscard]] QModelIndexList selectedRows() const;
    /// An entry for the context menu, behind the view's own. Borrowed.
    void addMenuAction(QAction *action);
    /// Selects exactly the rows of \a indexes, in one step.
    void selectOnly(const QModelIndexList &indexes);
    /// Makes the row of \a index current and the only selected one; the view does not scroll.
    void pickOnly(const QModelIndex &index);
    /// Makes the row of \a index current; the view does not scroll.
    void makeCurrent(const QModelIndex &index, QItemSelectionModel::SelectionFlags command);
    /// Makes the next row that shows current whose name holds what was typed last, as far as the
    /// keys followed one another; capital letters are no different.
    void keyboardSearch(const QString &typed) override;

protected:
    void resizeEvent(QResizeEvent *event) override;
    bool event(QEvent *event) override;
    void commitData(QWidget *editor) override;
    void selectionChanged(const QItemSelection &selected,
                          const QItemSelection &deselected) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void startDrag(Qt::DropActions actions) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private Q_SLOTS:
    void onCollapsed(QModelIndex index);
    void onExpanded(QModelIndex index);
    void onGroupBus();
    void onUngroupBus();
    void onRename();
    void onRestoreOrgName();
    void onReverse();
    void onDataFormatSetted(int format); ///< DataFormat::Type
    void onWaveColorSetted(int color);   ///< 0xRRGGBB
    void onHide();
    void onShowAll();
    void onMoveUp();
    void onMoveDown();

private:
    [[nodiscard]] SignalTreeModel *signalModel() const;
    [[nodiscard]] QPixmap dragPicture(const QModelIndexList &rows) const;
    [[nodiscard]] bool isOwnDrag(const QDropEvent &event) const;

    enum class Direction { Up, Down };

    [[nodiscard]] static bool haveOneParent(const QModelIndexList &rows);
    void moveSelected(Direction direction);
    void onSectionResized(int section, int width);
    void fillWidth();

    std::unique_ptr<RowHistory> m_history;
    std::unique_ptr<ActionDelegate> m_actionDelegate; ///< present drag, null when idle
    std::unique_ptr<ContextMenuDelegate> m_contextMenu;
    QList<QPointer<QAction>> m_menuActions; ///< of others
    int m_preferredWidth;
    int m_valueWidth = 0;
    bool m_isFilling = false; ///< the Value column is given the free width
    QString m_typed;          ///< of keys that followed one another
    QElapsedTimer m_sinceTyped;
};

/// What drag events do while it lives; one object a drag.
class SignalTreeView::ActionDelegate
{
public:
    explicit ActionDelegate(SignalTreeView *view) : m_view(view) {}
    ActionDelegate(const ActionDelegate &) = delete;
    ActionDelegate &operator=(const ActionDelegate &) = delete;
    virtual ~ActionDelegate() = default;

    virtual void dragEnter(QDragEnterEvent *) {}
    virtual void dragLeave(QDragLeaveEvent *) {}
    /// Refuses the place by the action Qt::IgnoreAction.
    virtual void dragMove(QDragMoveEvent *event) = 0;
    virtual void drop(QDropEvent *) {}

protected:
    [[nodiscard]] SignalTreeView *view() const { return m_view; }

private:
    SignalTreeView *m_view; // owns this object
};

} // namespace WaveMonitor
