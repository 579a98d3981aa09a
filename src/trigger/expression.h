#pragma once

#include <QBitArray>
#include <QString>
#include <QStringList>

namespace KEO {

/// The check of an expression that the user entered as tokens (`M0` to `M15`, "!", "&", "^", "|",
/// "(", ")").
bool isExpressionValid(const QStringList &tokens);

/// The tokens in postfix order; empty, and a critical log message, when brackets do not match.
QStringList infixToPostfix(const QStringList &tokens);

/// The truth table of an expression text over the n units that it names: 2^n characters "0", "1",
/// or "x" where the text cannot be evaluated. Bit k of an entry's position is the state of the k-th
/// lowest-numbered unit named. Any text is safe.
QString expressionTruthTable(const QString &text);

} // namespace KEO
