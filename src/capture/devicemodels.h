#pragma once

#include <QString>

namespace KEO {

/// Whether cores in this device model, letter for letter, write their capture memory one row late
/// when the design is described by a .keo file: a standard core takes one row more after the
/// trigger, a lite core's last row comes round to the first address.
bool writesOneRowLate(const QString &deviceModel);

} // namespace KEO
