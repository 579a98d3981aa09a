#pragma once

#include <base/result.h>

#include <QString>

namespace KEO {

struct MatchUnit;

// Values of match units as people write and read them, of any width. Binary texts hold 0 1 X R F B
// N as in MatchUnit.

/// \a binary in digits of so many bits each, the first one maybe of fewer: 3 for octal, 4 for
/// hexadecimal. A digit whose bits are all X is an X; one that no single character can say stands
/// in brackets, as in "[1X0R]C".
[[nodiscard]] QString digitText(const QString &binary, int bitsPerDigit);
/// The number in decimal; empty if there are letters in it.
[[nodiscard]] QString decimalText(const QString &binary);
/// \a binary as the field of a radix shows it; empty where the radix has no digits for it.
[[nodiscard]] QString fieldText(const QString &binary, int base);

/// Reads a value that was written elsewhere, in binary: plain digits of radix \a base, or with a
/// prefix that names the radix (0x 0b 0o, 32'h, 'd, x"…"). Blanks and "_" do not count. In radix 2
/// the first two are taken in small letters only, for "0X1" is a value. As long as written, without
/// the leading zeros.
[[nodiscard]] Result<QString> binaryOfText(const QString &text, int base);
/// \a text has such a prefix.
[[nodiscard]] bool hasRadixPrefix(const QString &text, int base);

/// The unit's value as tables show it; "minimum : maximum" of a range.
[[nodiscard]] QString valueText(const MatchUnit &unit);

struct UnitValues
{
    QString value0;
    QString value1;
};
/// What \a text, as valueText writes it, would set in \a unit by the rules of its port, type and
/// function; or why it can't. Each value may be written as for binaryOfText; a short one gets zeros
/// in front. The text of a unit that has no value sets none.
[[nodiscard]] Result<UnitValues> valuesFor(const MatchUnit &unit, const QString &text);

/// What the core makes of a stored value: zeros in front of a short one, the first characters of a
/// long one, X for an unknown character.
[[nodiscard]] QString valueInCore(const QString &value, int bits);

} // namespace KEO
