#pragma once

#include <config/matchtype.h>

#include <QString>

namespace KEO {

// The values of a match unit as the user edits them: digits of radix 2, 8, 10 or 16 in a masked
// field. Stored values are always binary, a character for each bit of the port; in radix 2 the
// letters X (any level) and R, F, B, N (edges) may stand among the digits.

/// Digits that a value of \a bits bits takes in radix \a base.
[[nodiscard]] int valueDigits(int bits, int base);
/// Input mask of a field of so many digits: capitals, and "0" wherever nothing was typed.
[[nodiscard]] QString valueMask(int digits);
/// What a field accepts, as a regular expression that has to match the whole text in any case.
[[nodiscard]] QString valuePattern(int base, MatchFunction func, MatchType matchType);

/// \a text, digits of radix \a from, as a number of radix \a to in capitals. A text that is no such
/// number, or one beyond 64 bits, gives \a width zeros; the debug log tells.
[[nodiscard]] QString baseConvert(const QString &text, int from, int to, int width);
/// baseConvert can say \a text as a number.
[[nodiscard]] bool isConvertible(const QString &text, int base);
/// The last \a width characters of \a text, with zeros in front where it is shorter.
[[nodiscard]] QString fitDigits(const QString &text, int width);
/// The least and the greatest value of a port of \a bits bits, "000~3FF". Beyond 64 bits the
/// greatest is known in radix 2 only, and zeros elsewhere: such values can't be converted.
[[nodiscard]] QString valueRange(int bits, int base);

enum class ValueProblem {
    None,
    TooWide,             ///< a value has more binary digits than the port has bits
    MaximumBelowMinimum, ///< of a range
};

/// Two values in binary, a character for each bit, and what keeps them from being stored.
struct BinaryValues
{
    QString value0;
    QString value1;
    ValueProblem problem = ValueProblem::None;
};

/// The stored form of what stands in the two fields. The second one is checked for range functions
/// only.
[[nodiscard]] BinaryValues binaryValues(const QString &text0, const QString &text1, int base,
                                        int bits, MatchFunction func);

} // namespace KEO
