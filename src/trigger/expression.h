#pragma once

#include <QStringList>

namespace KEO {

/// The check of an expression that the user entered as tokens (`M0` to `M15`, "!", "&", "^", "|",
/// "(", ")"). "!" binds tightest, then "&", "^" and "|". Equal ranks group from the left, "!"
/// included: a double "!" is refused.
bool isExpressionValid(const QStringList &tokens);

/// The tokens in postfix order; empty, and a critical log message, when brackets do not match.
QStringList infixToPostfix(const QStringList &tokens);

} // namespace KEO
