#pragma once

#include <wave_data/windowcontents.h>

#include <QAbstractItemModel>
#include <QList>
#include <QSet>

namespace WaveMonitor {

/// The rows of a viewer as an item model with the columns Name and Value, and all that changes
/// their arrangement: grouping, order, moving. Owns what the viewer shows and knows nothing of how
/// it is drawn.
///
/// An index points at its row's LayoutNode. Nothing here fails loudly: what cannot be done is left
/// undone, with the reason in the debug log.
class RowModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum Column : int { NameColumn = 0, ValueColumn = 1 };

    explicit RowModel(QObject *parent = nullptr);

    /// All that is shown. Borrowed; changes with it.
    [[nodiscard]] const WindowContents &contents() const { return m_contents; }
    /// The row of \a index; the root for an invalid index.
    [[nodiscard]] LayoutNode *node(const QModelIndex &index) const;

    /// Makes one bus of top-level rows given in row order, at the first one's row; buses among them
    /// give their members and vanish. All signals must have the same number of samples.
    void groupRows(const QModelIndexList &indexes);
    /// Puts the members of a bus into its place.
    void ungroupBus(const QModelIndex &index);
    /// The rows of these signals, and buses of them, bear a sign that they differ.
    void setMarkedSignals(const QSet<int> &ids);
    [[nodiscard]] bool isMarked(const LayoutNode &row) const;
    void restoreOriginalName(const QModelIndex &index);
    /// Turns the member order of a bus round, so that its values read mirrored.
    void reverse(const QModelIndex &bus);
    /// These four put the rows \a moved, in list order, before or after \a target, or first or last
    /// under \a parent (invalid for the top level), and return their new indexes. The first two
    /// also dissolve a bus that they leave without members. A bus never goes into a bus: then
    /// nothing moves and the result is empty.
    QModelIndexList moveAbove(const QModelIndex &target, const QModelIndexList &moved);
    QModelIndexList moveBelow(const QModelIndex &target, const QModelIndexList &moved);
    QModelIndexList movePrepend(const QModelIndex &parent, const QModelIndexList &moved);
    QModelIndexList moveAppend(const QModelIndex &parent, const QModelIndexList &moved);

    /// Makes rows and users' names those of \a snapshot. The model is reset if rows come, go or
    /// change places.
    void restoreLayout(const LayoutSnapshot &snapshot);
    /// The rows of those keys that exist, from the top down.
    [[nodiscard]] QModelIndexList indexesOf(const QSet<LayoutNode::Key> &keys) const;

    // The item model. Column 1 can be neither selected nor edited.
    [[nodiscard]] QModelIndex index(int row, int column,
                                    const QModelIndex &parent = {}) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex &index) const override;
    using QObject::parent;
    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    [[nodiscard]] Qt::DropActions supportedDropActions() const override;
    [[nodiscard]] Qt::DropActions supportedDragActions() const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;

Q_SIGNALS:
    /// \a row has left the rows and is freed when the receivers return.
    void rowFreed(const LayoutNode *row);
    /// Other rows are shown, or the members of a bus in another order.
    void structureChanged();
    /// Rows were told to move, and stand where they belong.
    void rowsPlaced();

protected:
    [[nodiscard]] QModelIndex indexOf(const LayoutNode *node) const;

    WindowContents m_contents;

private:
    enum class EmptyBus { Keep, Dissolve };

    [[nodiscard]] QList<LayoutNode *> nodesOf(const QModelIndexList &indexes) const;
    [[nodiscard]] QString groupingObstacle(const QList<const LayoutNode *> &nodes) const;
    void groupNodes(const QList<const LayoutNode *> &nodes);
    LayoutNode::List takeRows(int first, int last);
    QModelIndexList moveBefore(LayoutNode *anchor, LayoutNode *parent, const QModelIndexList &moved,
                               EmptyBus emptyBus);
    void moveNode(LayoutNode *node, LayoutNode *parent, const LayoutNode *anchor);

    QSet<int> m_markedSignals; ///< ids
};

} // namespace WaveMonitor
