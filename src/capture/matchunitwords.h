#pragma once

#include <config/matchtype.h>

#include <QBitArray>

namespace KEO {

struct MatchUnit;

/// Register contents of one match unit, each as wide as the unit's port, first signal of the port
/// first.
struct MatchUnitWords
{
    QBitArray compareWord;
    QBitArray maskWord;
    QBitArray edgeWord;

    bool operator==(const MatchUnitWords &) const = default;
};

/// Encodes the values of a unit that has a port. A value shorter than the port is filled with "0"
/// in front, of a longer one the first characters count, and an unknown character compares nothing.
MatchUnitWords encodeMatchUnitValue(const MatchUnit &unit);

/// The 4-bit control word: continuous counting, then the function number. A function outside 0 to 7
/// counts as 0.
QBitArray encodeMatchUnitControl(const MatchUnit &unit);

enum class Counting { Total, Continuous };
QBitArray controlWord(MatchFunction function, Counting counting);

} // namespace KEO
