#pragma once

namespace KEO {

class CarryAccount;
struct MatchUnit;

/// Puts comparison and count of \a before, which is in use, into \a now, which is the same unit of
/// the new design, in use or not.
void carryUnit(const MatchUnit &before, MatchUnit &now, CarryAccount &account);

} // namespace KEO
