#pragma once

#include <QList>

#include <functional>
#include <memory>
#include <unordered_map>

class QGraphicsItem;

namespace WaveMonitor {

class BusWaveItem;
class LayoutNode;
class SignalWaveItem;
class WaveItem;
class WindowContents;

/// The wave items of a viewer's rows, made on demand and owned here; scenes only show them. A row
/// must lose its item before it is freed, because a later row can stand at the same address.
class WaveViewDataSource final
{
public:
    /// \a contents is borrowed and outlives this object.
    explicit WaveViewDataSource(const WindowContents &contents);
    WaveViewDataSource(const WaveViewDataSource &) = delete;
    WaveViewDataSource &operator=(const WaveViewDataSource &) = delete;
    ~WaveViewDataSource();

    SignalWaveItem *signalItem(const LayoutNode *node);
    BusWaveItem *busItem(const LayoutNode *node);
    /// Frees the item of one row, if it has one.
    void removeItem(const LayoutNode *node);
    void clear();

    /// Brings samples, places and visibility of all items up to date and returns them in row order,
    /// members after their bus. Those of a collapsed bus are invisible. \a isExpanded is asked once
    /// a bus.
    QList<QGraphicsItem *>
    recalculateWaveItems(const std::function<bool(const LayoutNode *)> &isExpanded);
    void refreshItemColors();
    /// Marks the item of a row; nothing happens while it has none.
    void setSelected(const LayoutNode *node, bool selected);
    void clearSelection();
    /// The row of an item, or null.
    [[nodiscard]] const LayoutNode *nodeOf(const QGraphicsItem *item) const;

private:
    struct TakenFromScene
    {
        void operator()(WaveItem *item) const;
    };
    using Item = std::unique_ptr<WaveItem, TakenFromScene>;

    WaveItem *item(const LayoutNode *node);

    const WindowContents &m_contents;
    std::unordered_map<const LayoutNode *, Item> m_items;
};

} // namespace WaveMonitor
