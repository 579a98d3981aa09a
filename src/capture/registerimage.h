#pragma once

#include <config/coreconfig.h>

#include <QBitArray>
#include <QList>
#include <QString>

namespace KEO {

/// Register contents of one match unit, each as wide as the unit's port, first signal of the port
/// first.
struct MatchUnitWords
{
    QBitArray compareWord;
    QBitArray maskWord;
    QBitArray edgeWord;
};

/// Encodes the values of a unit that has a port. A value shorter than the port is filled with "0"
/// in front, of a longer one the first characters count, and an unknown character compares nothing.
MatchUnitWords encodeMatchUnitValue(const MatchUnit &unit);

/// The 4-bit control word: continuous counting, then the function number. A function outside 0 to 7
/// counts as 0.
QBitArray encodeMatchUnitControl(const MatchUnit &unit);

/// The words that write a core's whole configuration but for its truth tables, in the order in
/// which they are sent; the first one selects the core. \a deviceName is the device model of the
/// run and \a isZeo tells which form of description the core came from: both move the trigger
/// offset.
QList<QBitArray> buildRegisterImage(const CoreConfig &core, const QString &deviceName, bool isZeo);

/// The words that write the truth tables of a dynamic core, 2^K for each expression in force, K
/// being the number of units in use; none for a static core. A dynamic core without an expression
/// in force fires on any input. The core keeps its tables between runs.
///
/// A description from outside can ask for more than memory holds. Expressions from the first on
/// whose table has no address in 16 bits, or with which the image would take more than 512 MiB, are
/// left out, and the debug log says so.
QList<QBitArray> buildExpressionImage(const CoreConfig &core);

} // namespace KEO
