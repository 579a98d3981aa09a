#pragma once

#include <config/coreconfig.h>
#include <config/litecoreconfig.h>
#include <config/settingscarry.h>

#include <optional>

namespace KEO {

/// What the cores of a design are set to: copies of their records, which outlive the design.
struct CoreSetup
{
    CoreList standard;                  ///< none of a design with a lite core
    std::optional<LiteCoreConfig> lite; ///< nothing of a design with standard cores
    int delay = 0;                      ///< see Design::setDelay
};

/// The captured signals of the core with that number; those of the lite core, whatever \a core.
[[nodiscard]] QList<SignalEntry> capturedSignals(const CoreSetup &setup, int core);

/// All that was set is lost, since the design is of the other kind now.
[[nodiscard]] SettingsCarry lostSetup(const CoreSetup &before);

/// What there is to tell of the delay of a lite core, which is lost with the last one.
[[nodiscard]] CarriedSettings delayEntry(const CoreSetup &before, CarryOutcome outcome);

} // namespace KEO
