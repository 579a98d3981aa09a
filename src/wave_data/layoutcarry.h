#pragma once

#include "layoutsnapshot.h"

#include <base/carriedsetting.h>

#include <QHash>
#include <QSet>

#include <vector>

namespace WaveMonitor {

class WindowContents;

/// The rows of a window as its user has arranged them.
struct Arrangement
{
    std::vector<RowRecord> rows;   ///< top level
    std::vector<HiddenRow> hidden; ///< the last hidden one last
    QSet<LayoutNode::Key> open;    ///< buses that show their members
};

struct ArrangementCarry
{
    Arrangement arrangement;
    KEO::CarriedSettings account;
};

/// \a before, which belongs to a window with the signals and rows \a was, for a window with those
/// of \a is, from a new build of the design; both as their descriptions have them, samples apart.
/// \a ids leads from the signals of the old window to what became of them.
///
/// Each row, member of a bus or hidden row that is not at its default has one entry in the account:
/// a row with a name or colour by the user, a hidden one, a bus with a name, colour or radix or
/// that is open, a bus that its user made. One more tells of the order, unless it is that of the
/// description; then the rows take that of the new one. Else new signals come behind the one that
/// the description has before them, or into the bus that they belong to.
[[nodiscard]] ArrangementCarry carryArrangement(const Arrangement &before,
                                                const WindowContents &was, const WindowContents &is,
                                                const QHash<int, int> &ids, const QString &place);

} // namespace WaveMonitor
