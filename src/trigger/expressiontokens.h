#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace KEO {

/// The tokens of an expression as a user writes it, for isExpressionValid: `M0` to `M15`, in
/// capitals whatever the text has, "!", "&", "^", "|", "(" and ")". Blanks between them are left
/// out. Nothing if something else stands in \a text.
[[nodiscard]] std::optional<QStringList> expressionTokens(const QString &text);

/// The unit that a token names; nothing if it is an operator or a bracket.
[[nodiscard]] std::optional<int> unitOfToken(const QString &token);

} // namespace KEO
