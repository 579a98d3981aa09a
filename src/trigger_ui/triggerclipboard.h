#pragma once

#include <base/result.h>
#include <capture/triggercheck.h>

#include <QList>
#include <QString>

#include <optional>

namespace KEO {

struct CoreConfig;
struct MatchUnit;

// What the clipboard takes from the trigger of a core, and gives to it: plain text that can be read
// and written elsewhere.

/// The values of \a units, a line each; see valueText.
void copyValues(const QList<MatchUnit *> &units);
/// Sets the values of all \a units, from one line for all or from a line each, or of none: then why
/// not, of the unit that can't take its line.
[[nodiscard]] std::optional<TriggerFinding> pasteValues(const QList<MatchUnit *> &units);

void copyExpression(const QString &expression);
/// The expression on the clipboard in tokens, or why \a core can't take it.
[[nodiscard]] Result<QString> pastedExpression(const CoreConfig &core);

/// The `enabled` flag of each unit.
[[nodiscard]] QList<bool> unitFlags(const CoreConfig &core);

} // namespace KEO
