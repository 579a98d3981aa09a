#pragma once

#include "dataformat.h"

#include <QString>

#include <memory>
#include <vector>

class QDomDocument;
class QDomElement;

namespace WaveMonitor {

/// A row of the viewer, or the root above all rows. The tree says how samples are shown and never
/// touches them. It has two levels: the root holds signals and buses, a bus holds signals.
///
/// A node owns its children; the functions below keep `parent` of a child right. Nodes stay where
/// they are in memory while they move in the tree, so pointers to them serve as keys.
class LayoutNode
{
public:
    using List = std::vector<std::unique_ptr<LayoutNode>>;
    enum Type : int { Root = 0, Signal = 1, Bus = 2 };
    static constexpr int kDefaultColor = 0x00FF00;

    /// Names a row for as long as the program runs, also over a removal that was taken back. Never
    /// 0.
    using Key = quint64;

    explicit LayoutNode(Type nodeType = Root);
    LayoutNode(const LayoutNode &) = delete;
    LayoutNode &operator=(const LayoutNode &) = delete;
    virtual ~LayoutNode();
    /// The node as XML, without its children. The root gives an empty element `Layout`.
    virtual QDomElement toElement(QDomDocument &document) const;

    Key key;                   ///< a new one, unless somebody sets that of a row that is gone
    int color = kDefaultColor; ///< of the wave, 0xRRGGBB
    const Type type;
    LayoutNode *parent = nullptr;       ///< null at the root and in detached nodes
    std::unique_ptr<DataFormat> format; ///< never null
    List children;                      ///< in row order; none is null

    /// Position of \a node among the children, or -1.
    [[nodiscard]] int childIndex(const LayoutNode *node) const;
    /// The child at \a position, or null out of range.
    [[nodiscard]] LayoutNode *child(int position) const;
    /// Puts \a node before the child at \a position, or at the end for a position out of range.
    LayoutNode *insertChild(int position, std::unique_ptr<LayoutNode> node);
    LayoutNode *appendChild(std::unique_ptr<LayoutNode> node);
    /// Detaches one child; null out of range.
    [[nodiscard]] std::unique_ptr<LayoutNode> takeChild(int position);
    /// Detaches all children.
    [[nodiscard]] List takeChildren();
    void reverseChildren();
};

/// A row that shows one signal. It knows the signal by its id alone; the id may have no element,
/// and then the row shows nothing.
class SignalLayoutNode final : public LayoutNode
{
public:
    SignalLayoutNode() : LayoutNode(Signal) {}
    explicit SignalLayoutNode(int elementId) : LayoutNode(Signal), id(elementId) {}
    /// `Node` with the attributes type, id, text and color (decimal).
    QDomElement toElement(QDomDocument &document) const override;

    int id = -1;
    QString text; ///< name given to this row by the user; empty means none
};

/// A row that shows several signals as one number; child 0 is the most significant bit.
class BusLayoutNode final : public LayoutNode
{
public:
    BusLayoutNode() : LayoutNode(Bus) {}
    /// `Node` with the attributes type, name, text, format and color (decimal).
    QDomElement toElement(QDomDocument &document) const override;

    QString name; ///< generated, or from the core description
    QString text; ///< name given by the user; empty means none
};

} // namespace WaveMonitor
