#pragma once

#include <config/coreconfig.h>

/// Gives a port \a bits signals: a bus, and a single signal "last" with the display text "Last".
inline void connectPort(KEO::TriggerPort &port, int bits)
{
    KEO::SignalEntry bus{QStringLiteral("bus"), QString(), {}};
    for (int i = 1; i < bits; ++i)
        bus.members.append({QStringLiteral("bus[%1]").arg(bits - 1 - i), QString(), {}});
    port.signals.clear();
    if (bits > 1)
        port.signals.append(bus);
    port.signals.append({QStringLiteral("last"), QStringLiteral("Last"), {}});
}
