#pragma once

#include "dataformat.h"
#include "layoutnode.h"

#include <QList>
#include <QMap>
#include <QSet>
#include <QString>

#include <vector>

namespace WaveMonitor {

/// A row as a value: which one it is, and all that is shown of it.
struct RowRecord
{
    LayoutNode::Key key = 0;
    LayoutNode::Type type = LayoutNode::Signal;
    int id = -1;  ///< of a signal
    QString name; ///< of a bus
    QString text;
    DataFormat::Type format = DataFormat::Hexadecimal;
    int color = LayoutNode::kDefaultColor;
    std::vector<RowRecord> members; ///< of a bus, or the root's rows

    bool operator==(const RowRecord &other) const = default;
};

/// A row that the user has hidden, and where it stood then.
struct HiddenRow
{
    RowRecord row;
    LayoutNode::Key parent = 0;   ///< its bus; 0 at the top level
    LayoutNode::Key previous = 0; ///< the row before it; 0 when it was the first one
    LayoutNode::Key next = 0;     ///< the row after it; 0 when it was the last one

    bool operator==(const HiddenRow &other) const = default;
};

/// The rows of a window at one moment, without samples: what undo goes back to. Texts are shared.
struct LayoutSnapshot
{
    std::vector<RowRecord> rows;    ///< top level
    std::vector<HiddenRow> hidden;  ///< the last hidden one last
    QMap<int, QString> signalTexts; ///< users' names of signals, by id; none is empty

    bool operator==(const LayoutSnapshot &other) const = default;
};

/// \a node and its members as they are.
[[nodiscard]] RowRecord recordRow(const LayoutNode &node);
/// Makes the rows under \a root those of \a rows, and gives the nodes that are left over, members
/// apart from their buses. Nodes with the same key are taken over and not made anew.
[[nodiscard]] LayoutNode::List restoreRows(LayoutNode &root, const std::vector<RowRecord> &rows);
/// Do both have the same rows in the same places? How they look may differ.
[[nodiscard]] bool haveSamePlaces(const std::vector<RowRecord> &a, const std::vector<RowRecord> &b);

/// Ids of the signals that have a row.
[[nodiscard]] QSet<int> shownSignals(const LayoutSnapshot &snapshot);
/// \a snapshot without the rows of those keys, which are remembered as hidden. A bus that loses its
/// last member goes as well; one that had none is not remembered.
[[nodiscard]] LayoutSnapshot withRowsHidden(LayoutSnapshot snapshot,
                                            const QSet<LayoutNode::Key> &keys);
/// \a snapshot with all hidden rows back, each in its place if that still exists, and with a row
/// for each of the signals \a ids that has none. A row without a place comes after the one of the
/// signal before it.
[[nodiscard]] LayoutSnapshot withRowsShown(LayoutSnapshot snapshot, const QList<int> &ids);

/// Puts \a row after the top-level row with the greatest id below its own, or in front.
void insertById(std::vector<RowRecord> &rows, RowRecord row);

} // namespace WaveMonitor
