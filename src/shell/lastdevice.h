#pragma once

#include <QString>

namespace KEO {

/// A device as the tool flow names it.
struct NamedDevice
{
    QString family;
    QString device;

    bool operator==(const NamedDevice &) const = default;
};

/// The device that the program was started for last, from one start to the next: two lines in the
/// user's data folder. What can't be read or written is not remembered, and hinders nothing.
[[nodiscard]] NamedDevice lastDevice();
void rememberDevice(const NamedDevice &device);

} // namespace KEO
