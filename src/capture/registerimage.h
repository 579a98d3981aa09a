#pragma once

#include "matchunitwords.h"

#include <config/coreconfig.h>

#include <QBitArray>
#include <QList>
#include <QString>

namespace KEO {

/// The words that write a core's whole configuration but for its truth tables, in the order in
/// which they are sent; the first one selects the core. \a deviceName is the device model of the
/// run and \a isZeo tells which form of description the core came from: both move the trigger
/// offset.
QList<QBitArray> buildRegisterImage(const CoreConfig &core, const QString &deviceName, bool isZeo);

/// The words that write the truth tables of a dynamic core, 2^K for each expression in force, K
/// being the number of units in use; none for a static core. A dynamic core without an expression
/// in force fires on any input. The core keeps its tables between runs.
/// Expressions that triggerProgram leaves out have no words.
QList<QBitArray> buildExpressionImage(const CoreConfig &core);

} // namespace KEO
