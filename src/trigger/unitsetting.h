#pragma once

#include <base/result.h>

#include <QString>

#include <optional>

namespace KEO {

struct CoreConfig;
struct MatchUnit;

// A match unit's setting as one word of a command line: the unit, "=", and up to three parts with
// commas between them. Blanks around each are of no consequence.
//
//   M0===RX01              compares with ==, !=, >, <, >= or <=
//   M1=in 0x10..0x2F       lies in a range, both ends included; "not in" beside it
//   M2=>0d200,count=5      reports when it has matched five times
//   M2=count=5,continuous  the same, in five samples in a row
//
// A value is binary, with the letters that the unit takes, or has the prefix 0x, 0o or 0d, in small
// letters, of another radix. One that is shorter than the port has zeros in front, but a binary one
// with letters has to be whole. What is not named stays as it is.

/// Sets the unit that \a text names to what it says, by the rules by which the user edits a unit.
/// An error of kind Usage, a sentence that names unit and core, changes nothing.
[[nodiscard]] std::optional<Error> applyUnitSetting(const QString &text, CoreConfig &core);

/// The text that gives another unit of the same port, type and counter what \a unit has, in binary.
/// Nothing for a unit that compares no port, or that holds what applyUnitSetting refuses, as a
/// description may.
[[nodiscard]] std::optional<QString> unitSettingText(const MatchUnit &unit);

} // namespace KEO
