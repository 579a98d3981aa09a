#pragma once

#include <config/matchtype.h>

#include <QString>

#include <optional>

namespace KEO {

/// What a value field may hold.
struct ValueRules
{
    int base = 2; ///< radix
    int bits = 0;
    MatchFunction function = MatchFunction::Equal;
    MatchType type = MatchType::Basic;
};

/// What a field takes of a text that is pasted or dropped into it.
struct PastedValue
{
    std::optional<QString> digits; ///< of the radix; nothing: it takes none
    QString told;                  ///< why not, or what is cut; maybe empty
};

/// The text is to be the whole value. It may have a prefix that names another radix.
[[nodiscard]] PastedValue pastedWhole(const QString &text, const ValueRules &rules);
/// The text is digits that go where there is room for so many.
[[nodiscard]] PastedValue pastedDigits(const QString &text, qsizetype room,
                                       const ValueRules &rules);

} // namespace KEO
