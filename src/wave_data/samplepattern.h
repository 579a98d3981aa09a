#pragma once

#include "dataformat.h"

#include <base/result.h>

#include <QBitArray>
#include <QByteArray>
#include <QString>

namespace WaveMonitor {

/// What the samples of a row are searched for.
struct SamplePattern
{
    enum Kind {
        Change,  ///< the value differs from the one before
        Rise,    ///< of a single bit
        Fall,    ///< of a single bit
        Value,   ///< the value is `low` wherever `known` has a bit
        Range,   ///< the value is at least `low` and at most `high`
        Decimals ///< of the values in such a range, those whose decimal text has these `digits`
    };
    Kind kind = Change;
    bool isNegated = false; ///< of Value, Range and Decimals: every other value
    bool isSigned = false;  ///< of Range and Decimals: bit 0 is the sign
    QBitArray low{};        ///< as many bits as the row, the most significant first
    QBitArray high{};       ///< of Range and Decimals, likewise
    QBitArray known{};      ///< of Value alone, likewise
    QByteArray digits{};    ///< of Decimals: 0 to 9 and X for any, perhaps after a "-"

    bool operator==(const SamplePattern &other) const = default;
};

/// Reads what a user looks for in a row of \a bits bits that shows its values in \a radix: a value
/// as the row would show it, with X for any digit, or one of =, ==, !=, <, <=, > and >= and such a
/// value. Missing leading digits are 0, blanks and underscores count for nothing. A small "0x",
/// "0o" and,
/// where it is no number of the radix, "0b" or the HDL's 'h, 'd, 'o and 'b say another radix.
[[nodiscard]] KEO::Result<SamplePattern> parsePattern(const QString &text, qsizetype bits,
                                                      DataFormat::Type radix);

/// Does \a text begin with one of the signs of a comparison?
[[nodiscard]] bool isComparison(const QString &text);

} // namespace WaveMonitor
