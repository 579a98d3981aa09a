#pragma once

#include <QList>
#include <QString>

namespace KEO {

/// Texts of MatchUnit::match_type (0 to 5) and MatchUnit::func (0 to 7); empty for other numbers.
QString matchTypeText(int type);
QString matchFunctionText(int function);

/// The functions that a match type offers, in the order to show them; none for an unknown type. A
/// type with edges offers the same as its twin without.
QList<int> functionsForMatchType(int type);

} // namespace KEO
