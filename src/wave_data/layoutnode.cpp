#include "layoutnode.h"

#include "windowxml.h"

#include <QDomDocument>
#include <QDomElement>

#include <algorithm>
#include <atomic>
#include <iterator>

namespace WaveMonitor {

namespace {

LayoutNode::Key nextKey()
{
    static std::atomic<LayoutNode::Key> last = 0;
    return ++last;
}

} // namespace

LayoutNode::LayoutNode(Type nodeType)
    : key(nextKey()), type(nodeType), format(std::make_unique<DataFormat>())
{
}

LayoutNode::~LayoutNode() = default;

QDomElement LayoutNode::toElement(QDomDocument &document) const
{
    return document.createElement(QStringLiteral("Layout"));
}

int LayoutNode::childIndex(const LayoutNode *node) const
{
    const auto found = std::find_if(children.begin(), children.end(),
                                    [node](const auto &each) { return each.get() == node; });
    return found == children.end() ? -1 : int(std::distance(children.begin(), found));
}

LayoutNode *LayoutNode::child(int position) const
{
    return position >= 0 && size_t(position) < children.size() ? children[size_t(position)].get()
                                                               : nullptr;
}

LayoutNode *LayoutNode::insertChild(int position, std::unique_ptr<LayoutNode> node)
{
    Q_ASSERT(node && !node->parent);
    const size_t at = position < 0 ? children.size() : std::min(size_t(position), children.size());
    node->parent = this;
    return children.insert(children.begin() + qsizetype(at), std::move(node))->get();
}

LayoutNode *LayoutNode::appendChild(std::unique_ptr<LayoutNode> node)
{
    return insertChild(-1, std::move(node));
}

std::unique_ptr<LayoutNode> LayoutNode::takeChild(int position)
{
    if (!child(position))
        return nullptr;
    const auto at = children.begin() + position;
    std::unique_ptr<LayoutNode> taken = std::move(*at);
    children.erase(at);
    taken->parent = nullptr;
    return taken;
}

LayoutNode::List LayoutNode::takeChildren()
{
    for (const auto &each : children)
        each->parent = nullptr;
    return std::exchange(children, {});
}

void LayoutNode::reverseChildren()
{
    std::reverse(children.begin(), children.end());
}

QDomElement SignalLayoutNode::toElement(QDomDocument &document) const
{
    return newElement(document, QStringLiteral("Node"), rowAttributes(*this));
}

QDomElement BusLayoutNode::toElement(QDomDocument &document) const
{
    return newElement(document, QStringLiteral("Node"), rowAttributes(*this));
}

} // namespace WaveMonitor
