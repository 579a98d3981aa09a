#pragma once

#include <QtGlobal>

namespace KEO::Registers {

// Addresses of a core's registers. Each is as wide as the core's register width, and a value
// stands right-aligned in it.

inline constexpr qint64 kStart = 0x0000;
inline constexpr qint64 kCaptureInit = 0x0002;     ///< of a lite core
inline constexpr qint64 kExpressionCount = 0x0020; ///< minus 1
inline constexpr qint64 kCaptureAmount = 0x0021;   ///< minus 1
inline constexpr qint64 kTriggerOffset = 0x0022;
inline constexpr qint64 kWindowCount = 0x0023; ///< minus 1
inline constexpr qint64 kUnitBase = 0x0100;    ///< of match unit 0
inline constexpr qint64 kTableBase = 0xAB00;   ///< of the first expression in force
inline constexpr qint64 kAddressEnd = 0x10000;

inline constexpr qint64 kBlock = 16; ///< addresses that a unit or an expression takes

/// Inside the block of a match unit.
enum UnitRegister { Compare = 0, Mask = 1, Edge = 2, Control = 3, Counter = 4 };
/// Inside the block of an expression. Writing an input number changes that entry of its table.
enum TableRegister { ClearEntry = 0, SetEntry = 1 };

/// Width of the control register's contents: continuous, then three bits of the function.
inline constexpr int kControlBits = 4;

} // namespace KEO::Registers
