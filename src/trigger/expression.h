#pragma once

#include <QList>
#include <QStringList>

namespace KEO {

/// The check of an expression that the user entered as tokens (`M0` to `M15`, "!", "&", "^", "|",
/// "(", ")"). "!" binds tightest, then "&", "^" and "|". Equal ranks group from the left, "!"
/// included: a double "!" is refused.
bool isExpressionValid(const QStringList &tokens);

/// The tokens in postfix order; empty, and a critical log message, when brackets do not match.
QStringList infixToPostfix(const QStringList &tokens);

/// The first of \a tokens that can stand in no expression, as a sentence: the name of a unit that
/// does not exist or whose flag in \a units is off (flag i is of unit i; a missing flag means on),
/// or no token at all. Empty if there is none.
[[nodiscard]] QString tokenFault(const QStringList &tokens, const QList<bool> &units);
/// What keeps \a tokens from being an expression, in the same way: besides tokenFault what
/// isExpressionValid refuses.
[[nodiscard]] QString expressionFault(const QStringList &tokens, const QList<bool> &units);

/// \a expression with units named M3 where a description says match[3].
[[nodiscard]] QString withUnitNames(const QString &expression);

/// An expression while it is entered, in whole tokens or character by character. Characters that
/// belong to no token stay as tokens of their own, so that nothing typed gets lost unseen:
/// expressionFault names them.
class ExpressionInput final
{
public:
    /// Characters of a pasted text at most; a clipboard may hold a book.
    static constexpr int kMaxPasted = 4096;

    [[nodiscard]] const QStringList &tokens() const { return m_tokens; }
    /// A unit's name lacks its number so far.
    [[nodiscard]] bool isNameBegun() const;

    void append(const QString &token);
    /// Digits that follow one another, with or without an M before them, make one unit's name.
    /// A blank ends it.
    void type(QChar character);
    void type(const QString &text);
    void removeLast();
    void clear();

private:
    QStringList m_tokens;
    bool m_isNameOpen = false; // the last token is a name that the next digit continues
};

} // namespace KEO
