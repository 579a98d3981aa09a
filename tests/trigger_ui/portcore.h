#pragma once

#include <config/coreconfig.h>

/// Gives a port \a bits signals: a bus, and a single signal "last" with the display text "Last".
inline void connectPort(KEO::TriggerPort &port, int bits)
{
    KEO::SignalEntry bus{"bus", {}, {}};
    for (int i = bits - 2; i >= 0; --i)
        bus.members.append({QStringLiteral("bus[%1]").arg(i), {}, {}});
    port.signals = {bus, {"last", "Last", {}}};
}
