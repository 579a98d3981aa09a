#pragma once

#include <QList>
#include <QString>

namespace KEO {

/// What the hardware of a match unit can compare, as descriptions number it. A description may hold
/// any other number as well, and keeps it.
enum class MatchType : int {
    Basic = 0,
    BasicWithEdges = 1,
    Extended = 2,
    ExtendedWithEdges = 3,
    Range = 4,
    RangeWithEdges = 5,
};

/// How a match unit compares its port, as descriptions and registers number it. A description may
/// hold any other number as well, and keeps it.
enum class MatchFunction : int {
    Equal = 0,
    NotEqual = 1,
    Greater = 2,
    Less = 3,
    GreaterOrEqual = 4,
    LessOrEqual = 5,
    InRange = 6,
    NotInRange = 7,
};

/// Every type and function that has a name, in the order of their numbers.
[[nodiscard]] QList<MatchType> matchTypes();
[[nodiscard]] bool isKnown(MatchFunction function);

/// Their names; empty for other numbers.
[[nodiscard]] QString matchTypeText(MatchType type);
[[nodiscard]] QString matchFunctionText(MatchFunction function);

[[nodiscard]] bool hasEdges(MatchType type);
/// The function compares with a minimum and a maximum.
[[nodiscard]] bool isRangeFunction(MatchFunction function);
/// The function tells equal from unequal values only, so that single bits may be left open.
[[nodiscard]] bool isEqualityFunction(MatchFunction function);

/// The functions that a match type offers, in the order to show them; none for an unknown type. A
/// type with edges offers the same as its twin without.
[[nodiscard]] QList<MatchFunction> functionsForMatchType(MatchType type);

} // namespace KEO
