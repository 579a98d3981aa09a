#include "waveviewdatasource.h"

#include <wave/common/viewergeometry.h>
#include <wave/traces/buswaveitem.h>
#include <wave/traces/signalwaveitem.h>
#include <wave_data/rowtext.h>
#include <wave_data/windowcontents.h>

#include <QGraphicsScene>
#include <QtDebug>

#include <algorithm>

namespace WaveMonitor {

namespace {

/// Do both share one buffer? Far cheaper than comparing samples, and true whenever nobody has
/// handed in new ones.
bool isShared(const QBitArray &a, const QBitArray &b)
{
    return a.bits() == b.bits() && a.size() == b.size();
}

bool isShared(const QList<QBitArray> &a, const QList<QBitArray> &b)
{
    return std::equal(a.cbegin(), a.cend(), b.cbegin(), b.cend(),
                      [](const QBitArray &x, const QBitArray &y) { return isShared(x, y); });
}

void showColor(const LayoutNode *node, WaveItem *item)
{
    item->setColor(QColor::fromRgb(QRgb(node->color)));
}

} // namespace

void WaveViewDataSource::TakenFromScene::operator()(WaveItem *item) const
{
    if (item->scene())
        item->scene()->removeItem(item);
    delete item;
}

WaveViewDataSource::WaveViewDataSource(const WindowContents &contents) : m_contents(contents)
{
}

WaveViewDataSource::~WaveViewDataSource() = default;

SignalWaveItem *WaveViewDataSource::signalItem(const LayoutNode *node)
{
    Q_ASSERT(node->type == LayoutNode::Signal);
    return static_cast<SignalWaveItem *>(item(node));
}

BusWaveItem *WaveViewDataSource::busItem(const LayoutNode *node)
{
    Q_ASSERT(node->type == LayoutNode::Bus);
    return static_cast<BusWaveItem *>(item(node));
}

WaveItem *WaveViewDataSource::item(const LayoutNode *node)
{
    Item &item = m_items[node];
    if (item)
        return item.get();
    if (node->type == LayoutNode::Bus) {
        qDebug().noquote() << "create busItem for bus name: " << rowName(m_contents, *node);
        auto bus = std::make_unique<BusWaveItem>();
        bus->setFormat(node->format.get());
        item.reset(bus.release());
    } else {
        qDebug() << "create signalItem for signal id: "
                 << static_cast<const SignalLayoutNode *>(node)->id;
        item.reset(new SignalWaveItem);
    }
    showColor(node, item.get());
    return item.get();
}

void WaveViewDataSource::removeItem(const LayoutNode *node)
{
    if (m_items.erase(node) > 0 && node->type == LayoutNode::Bus)
        qDebug().noquote() << "remove item for bus named: " << rowName(m_contents, *node);
}

void WaveViewDataSource::clear()
{
    m_items.clear();
}

QList<QGraphicsItem *>
WaveViewDataSource::recalculateWaveItems(const std::function<bool(const LayoutNode *)> &isExpanded)
{
    QList<QGraphicsItem *> items;
    int row = 0;
    const auto place = [&row](QGraphicsItem *item) { item->setPos(0, ROW_HEIGHT * row++); };
    const auto showSamples = [this, &items](const LayoutNode *node) {
        SignalWaveItem *item = signalItem(node);
        items.append(item);
        const SignalElement *element =
            m_contents.signal(static_cast<const SignalLayoutNode *>(node)->id);
        const QBitArray samples = element ? element->data : QBitArray();
        if (!isShared(item->data(), samples))
            item->setData(samples);
        return item;
    };
    for (const auto &node : m_contents.layout().children) {
        if (node->type == LayoutNode::Signal) {
            SignalWaveItem *item = showSamples(node.get());
            place(item);
            item->setVisible(true);
            continue;
        }
        BusWaveItem *bus = busItem(node.get());
        items.append(bus);
        place(bus);
        const bool expanded = isExpanded(node.get());
        QList<QBitArray> samples;
        samples.reserve(qsizetype(node->children.size()));
        for (const auto &member : node->children) {
            SignalWaveItem *item = showSamples(member.get());
            item->setVisible(expanded);
            if (expanded)
                place(item);
            samples.append(item->data());
        }
        if (!isShared(bus->members(), samples))
            bus->setMembers(samples);
        bus->setVisible(true);
    }
    qDebug() << "WaveViewDataSource::recalculateWaveItems count: " << items.size();
    return items;
}

void WaveViewDataSource::refreshItemColors()
{
    for (const auto &row : m_contents.layout().children) {
        showColor(row.get(), item(row.get()));
        for (const auto &member : row->children)
            showColor(member.get(), item(member.get()));
    }
}

void WaveViewDataSource::setSelected(const LayoutNode *node, bool selected)
{
    const auto found = m_items.find(node);
    if (found != m_items.end())
        found->second->setSelected(selected);
}

void WaveViewDataSource::clearSelection()
{
    for (const auto &[node, item] : m_items)
        item->setSelected(false);
}

const LayoutNode *WaveViewDataSource::nodeOf(const QGraphicsItem *item) const
{
    const auto found = std::find_if(m_items.cbegin(), m_items.cend(), [item](const auto &entry) {
        return entry.second.get() == item;
    });
    return found == m_items.cend() ? nullptr : found->first;
}

} // namespace WaveMonitor
