#pragma once

#include "capturelimits.h"

#include <optional>

namespace KEO {

class CarryAccount;

/// Puts windows, amount and trigger position of \a before into \a now, as far as its memory holds
/// them. Gives them back if it holds no window at all: such a core can't be captured, so that its
/// numbers are none that a user would have chosen.
std::optional<CaptureNumbers> carryNumbers(const CoreConfig &before, CoreConfig &now,
                                           CarryAccount &account);

} // namespace KEO
