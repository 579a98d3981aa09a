#pragma once

#include <QStringList>

namespace WaveMonitor {

/// The name that signals called `base[first]` to `base[last]` make up together, `base[first:last]`,
/// when there are two or more, all bases are equal and the indices rise or fall by one throughout.
/// The order is that of \a names. Empty when they make no such name.
[[nodiscard]] QString defaultBusName(const QStringList &names);

/// "group_N", with the smallest N from 0 that none of \a busNames of the form `group_N[a:b]` uses.
[[nodiscard]] QString nextGroupName(const QStringList &busNames);

/// The generated name of a bus without a name of its own: nextGroupName with the index range of
/// \a signalCount signals, such as "group_0[7:0]".
[[nodiscard]] QString groupBusName(const QStringList &busNames, int signalCount);

} // namespace WaveMonitor
