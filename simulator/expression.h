#pragma once

#include "outcome.h"

#include <QBitArray>
#include <QList>
#include <QString>

namespace Sim {

/// What a trigger expression answers for every input: bit i of the result is its value when the
/// match units report the input number i, of which bit k belongs to the k-th entry of \a units.
///
///     or    = xor { "|" xor }      and   = unary { "&" unary }
///     xor   = and { "^" and }      unary = { "!" } ( "M" number | "(" or ")" )
///
/// A unit that is not among \a units never matches. At most 16 units.
Outcome<QBitArray> expressionTable(const QString &text, const QList<int> &units);

} // namespace Sim
