#include "layoutsnapshot.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace WaveMonitor {

namespace {

using NodesByKey = std::unordered_map<LayoutNode::Key, std::unique_ptr<LayoutNode>>;

void collect(LayoutNode &parent, NodesByKey &nodes)
{
    for (auto &node : parent.takeChildren()) {
        collect(*node, nodes);
        nodes[node->key] = std::move(node);
    }
}

std::unique_ptr<LayoutNode> newNode(const RowRecord &row)
{
    if (row.type == LayoutNode::Bus)
        return std::make_unique<BusLayoutNode>();
    return std::make_unique<SignalLayoutNode>(row.id);
}

void showRecord(LayoutNode &node, const RowRecord &row)
{
    node.key = row.key;
    node.color = row.color;
    node.format->setType(row.format);
    if (row.type == LayoutNode::Bus) {
        auto &bus = static_cast<BusLayoutNode &>(node);
        bus.name = row.name;
        bus.text = row.text;
    } else {
        static_cast<SignalLayoutNode &>(node).text = row.text;
    }
}

void build(LayoutNode &parent, const std::vector<RowRecord> &rows, NodesByKey &nodes)
{
    parent.children.reserve(rows.size());
    for (const RowRecord &row : rows) {
        const auto kept = nodes.extract(row.key);
        LayoutNode *node =
            parent.appendChild(kept.empty() ? newNode(row) : std::move(kept.mapped()));
        showRecord(*node, row);
        build(*node, row.members, nodes);
    }
}

std::vector<RowRecord>::iterator findRow(std::vector<RowRecord> &rows, LayoutNode::Key key)
{
    return std::ranges::find(rows, key, &RowRecord::key);
}

/// Takes the rows of \a keys out of \a rows; the buses among them keep their members.
void hideAmong(std::vector<RowRecord> &rows, LayoutNode::Key parent,
               const QSet<LayoutNode::Key> &keys, std::vector<HiddenRow> &hidden)
{
    std::vector<RowRecord> left;
    left.reserve(rows.size());
    LayoutNode::Key previous = 0;
    for (size_t i = 0; i < rows.size(); ++i) {
        RowRecord &row = rows[i];
        const bool hadMembers = !row.members.empty();
        const bool chosen = keys.contains(row.key);
        const LayoutNode::Key before = std::exchange(previous, row.key);
        if (!chosen)
            hideAmong(row.members, row.key, keys, hidden);
        if (!chosen && (!hadMembers || !row.members.empty())) {
            left.push_back(std::move(row));
            continue;
        }
        const LayoutNode::Key next = i + 1 < rows.size() ? rows[i + 1].key : 0;
        if (hadMembers || row.type == LayoutNode::Signal)
            hidden.push_back({std::move(row), parent, before, next});
    }
    rows = std::move(left);
}

int leastId(const RowRecord &row)
{
    if (row.type == LayoutNode::Signal)
        return row.id;
    const auto least = std::ranges::min_element(row.members, {}, &RowRecord::id);
    return least == row.members.end() ? -1 : least->id;
}

void show(std::vector<RowRecord> &rows, HiddenRow hidden)
{
    std::vector<RowRecord> *siblings = &rows;
    if (hidden.parent != 0) {
        const auto bus = findRow(rows, hidden.parent);
        siblings = bus == rows.end() ? nullptr : &bus->members;
    }
    if (siblings) {
        const auto next = findRow(*siblings, hidden.next);
        const auto previous = findRow(*siblings, hidden.previous);
        if (next != siblings->end() || hidden.next == 0 || previous != siblings->end()) {
            const bool after = next == siblings->end() && previous != siblings->end();
            siblings->insert(after ? previous + 1 : next, std::move(hidden.row));
            return;
        }
    }
    insertById(rows, std::move(hidden.row));
}

} // namespace

RowRecord recordRow(const LayoutNode &node)
{
    RowRecord row;
    row.key = node.key;
    row.type = node.type;
    row.format = node.format->type();
    row.color = node.color;
    if (node.type == LayoutNode::Signal) {
        const auto &signal = static_cast<const SignalLayoutNode &>(node);
        row.id = signal.id;
        row.text = signal.text;
    } else if (node.type == LayoutNode::Bus) {
        const auto &bus = static_cast<const BusLayoutNode &>(node);
        row.name = bus.name;
        row.text = bus.text;
    }
    row.members.reserve(node.children.size());
    for (const auto &member : node.children)
        row.members.push_back(recordRow(*member));
    return row;
}

LayoutNode::List restoreRows(LayoutNode &root, const std::vector<RowRecord> &rows)
{
    NodesByKey nodes;
    collect(root, nodes);
    build(root, rows, nodes);
    LayoutNode::List left;
    left.reserve(nodes.size());
    for (auto &[key, node] : nodes)
        left.push_back(std::move(node));
    return left;
}

bool haveSamePlaces(const std::vector<RowRecord> &a, const std::vector<RowRecord> &b)
{
    return std::ranges::equal(a, b, [](const RowRecord &x, const RowRecord &y) {
        return x.key == y.key && haveSamePlaces(x.members, y.members);
    });
}

QSet<int> shownSignals(const LayoutSnapshot &snapshot)
{
    QSet<int> ids;
    for (const RowRecord &row : snapshot.rows) {
        if (row.type == LayoutNode::Signal)
            ids.insert(row.id);
        for (const RowRecord &member : row.members)
            ids.insert(member.id);
    }
    return ids;
}

void insertById(std::vector<RowRecord> &rows, RowRecord row)
{
    const int id = leastId(row);
    auto place = rows.begin();
    int best = -1;
    for (auto each = rows.begin(); each != rows.end(); ++each) {
        const auto consider = [&](int other) {
            if (other < id && other >= best) {
                best = other;
                place = each + 1;
            }
        };
        if (each->type == LayoutNode::Signal)
            consider(each->id);
        for (const RowRecord &member : each->members)
            consider(member.id);
    }
    rows.insert(place, std::move(row));
}

LayoutSnapshot withRowsHidden(LayoutSnapshot snapshot, const QSet<LayoutNode::Key> &keys)
{
    hideAmong(snapshot.rows, 0, keys, snapshot.hidden);
    return snapshot;
}

LayoutSnapshot withRowsShown(LayoutSnapshot snapshot, const QList<int> &ids)
{
    // The last one first, so that each finds what stood around it when it went.
    std::vector<HiddenRow> hidden = std::exchange(snapshot.hidden, {});
    for (auto row = hidden.rbegin(); row != hidden.rend(); ++row)
        show(snapshot.rows, std::move(*row));

    const QSet<int> shown = shownSignals(snapshot);
    for (const int id : ids) {
        if (!shown.contains(id))
            insertById(snapshot.rows, recordRow(SignalLayoutNode(id)));
    }
    return snapshot;
}

} // namespace WaveMonitor
