#pragma once

#include "triggerprogram.h"

#include <QList>

#include <span>
#include <vector>

namespace KEO {

/// Which units of one port can match at the same sample, over all values that the port can have
/// then and just before: each possible set once, as a number whose bit k is \a units[k]; at least
/// one. More sets than there are only if the units' values are so many and so different that the
/// search would take too long. At most 16 units.
std::vector<quint32> matchSets(std::span<const UnitProgram> units);

} // namespace KEO
