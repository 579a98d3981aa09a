#pragma once

#include "capturelimits.h"
#include "coreconfig.h"

#include <base/carriedsetting.h>

#include <QHash>

namespace KEO {

struct LiteCoreConfig;

// A design was built anew, and the user wants to go on as before. What the user can set goes from
// the records of the old description into those of the new one, as far as that holds it; what the
// design alone decides (ports, match types, units in use, memory) stays as the new one has it.
//
// A setting has one entry in the account unless it has its default and the new description brings
// the same. Settings of a core are: its windows, amount and trigger position; whether it runs (the
// first one does by default); of each unit in use the comparison, which is the function with its
// values, and the count with "continuous" of its counter; of a dynamic core each expression, and
// each check mark that is off; the users' names of captured signals. A comparison that compares
// nothing is its default, of an expression there is none.
//
// A lost setting leaves what the new description brings. What the old set-up did not have must not
// change its trigger: an expression or first core that is new does not take part, and has an entry.

struct SettingsCarry
{
    CarriedSettings account; ///< core by core in the old order
    QHash<int, int> cores;   ///< from the number of an old core to that of the new one
    /// What was asked of cores, by their new number, whose memory holds no window at all. Whoever
    /// carries on from them begins with these.
    QHash<int, CaptureNumbers> unheld = {};
};

/// Where each signal of one list of flat names stands in another, or -1. One that was renamed is
/// not found: nobody knows that it means the same.
[[nodiscard]] QList<int> positionsByName(const QStringList &before, const QStringList &now);

/// Puts the settings of \a before into \a now, which was just loaded. A core is found again by
/// module and number; else by module and clock, if only one core of both designs has them; else by
/// number.
SettingsCarry carrySettings(const CoreList &before, const CoreList &now);

/// A lite core has names alone.
CarriedSettings carrySettings(const LiteCoreConfig &before, LiteCoreConfig &now);

/// Why no setting of a core is there any more.
[[nodiscard]] CarriedSettings lostSettings(const CoreList &before);
[[nodiscard]] CarriedSettings lostSettings(const LiteCoreConfig &before);

} // namespace KEO
