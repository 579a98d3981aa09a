#include "rowtext.h"

#include "windowcontents.h"

namespace WaveMonitor {

namespace {

const SignalElement *elementOf(const WindowContents &contents, const LayoutNode *row)
{
    return row && row->type == LayoutNode::Signal
               ? contents.signal(static_cast<const SignalLayoutNode *>(row)->id)
               : nullptr;
}

/// The rows of the signals that make a row's value.
QList<const LayoutNode *> leavesOf(const LayoutNode &row)
{
    QList<const LayoutNode *> leaves;
    if (row.type == LayoutNode::Signal)
        leaves.append(&row);
    for (const auto &member : row.children)
        leaves.append(member.get());
    return leaves;
}

bool hasSample(const SignalElement *element, int sample)
{
    return element && sample >= 0 && sample < element->data.size();
}

/// The value's bits, most significant first; none where the first signal has no such sample.
QBitArray bitsAt(const WindowContents &contents, const QList<const LayoutNode *> &rows, int sample)
{
    if (rows.isEmpty() || !hasSample(elementOf(contents, rows.first()), sample))
        return {};
    QBitArray bits(rows.size());
    for (qsizetype i = 0; i < rows.size(); ++i) {
        const SignalElement *element = elementOf(contents, rows[i]);
        bits.setBit(i, hasSample(element, sample) && element->data.testBit(sample));
    }
    return bits;
}

} // namespace

QString rowName(const WindowContents &contents, const LayoutNode &row)
{
    if (row.type == LayoutNode::Signal)
        return contents.displayName(static_cast<const SignalLayoutNode &>(row));
    if (row.type != LayoutNode::Bus)
        return {};
    const auto &bus = static_cast<const BusLayoutNode &>(row);
    return bus.text.isEmpty() ? bus.name : bus.text;
}

bool isRowRenamed(const WindowContents &contents, const LayoutNode &row)
{
    if (row.type == LayoutNode::Bus)
        return !static_cast<const BusLayoutNode &>(row).text.isEmpty();
    if (row.type != LayoutNode::Signal)
        return false;
    const SignalElement *element = elementOf(contents, &row);
    return !static_cast<const SignalLayoutNode &>(row).text.isEmpty() ||
           (element && !element->text.isEmpty());
}

QString rowValue(const WindowContents &contents, const LayoutNode &row)
{
    return rowValueAt(contents, row, contents.shownSample());
}

QString rowValueAt(const WindowContents &contents, const LayoutNode &row, int sample)
{
    return row.format->toText(bitsAt(contents, leavesOf(row), sample));
}

QList<QBitArray> rowMembers(const WindowContents &contents, const LayoutNode &row)
{
    QList<QBitArray> members;
    const QList<const LayoutNode *> leaves = leavesOf(row);
    for (const LayoutNode *leaf : leaves) {
        const SignalElement *element = elementOf(contents, leaf);
        members.append(element ? element->data : QBitArray());
    }
    return members;
}

} // namespace WaveMonitor
