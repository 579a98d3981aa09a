#pragma once

#include <QBitArray>
#include <QList>
#include <QString>

namespace WaveMonitor {

class LayoutNode;
class WindowContents;

/// The name that a row shows: the user's if there is one, else the original.
[[nodiscard]] QString rowName(const WindowContents &contents, const LayoutNode &row);
/// Does the row show a name given by the user?
[[nodiscard]] bool isRowRenamed(const WindowContents &contents, const LayoutNode &row);
/// The row's value at the shown sample, in the row's radix; "null" where there is no sample.
[[nodiscard]] QString rowValue(const WindowContents &contents, const LayoutNode &row);
/// The same at any sample.
[[nodiscard]] QString rowValueAt(const WindowContents &contents, const LayoutNode &row, int sample);
/// The samples of the signals that make the row's value, the most significant bit first. Shared.
[[nodiscard]] QList<QBitArray> rowMembers(const WindowContents &contents, const LayoutNode &row);

} // namespace WaveMonitor
