#pragma once

#include <QString>

namespace KEO {

/// What stands behind the first colon of a line "Key: value", or the whole line without one; runs
/// of blanks become one.
inline QString valueOf(const QString &line)
{
    return line.mid(line.indexOf(u':') + 1).simplified();
}

} // namespace KEO
