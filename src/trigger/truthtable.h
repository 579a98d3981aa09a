#pragma once

#include <QString>

namespace KEO {

/// The truth table of an expression text over the n units that it names: 2^n characters "0", "1",
/// or "x" where the text cannot be evaluated. Bit k of an entry's position is the state of the k-th
/// lowest-numbered unit named. A text without units has one entry.
///
/// The text may come from a file and hold anything. Inside, the units become the letters "A", "B",
/// ... from the highest-numbered down; a capital letter that the text itself holds is the same
/// variable as that letter. Whether a text can be evaluated does not depend on the values, so a
/// table is either free of "x" or nothing but "x". It is nothing but "x" when
/// - an operator lacks an operand, or more than one value is left at the end;
/// - a ")" that follows an operator has no "(";
/// - the letters are not the first n of the alphabet, so that one of them stands for no unit;
/// - there are more than 16 different letters, which no choice of units gives; the table then has
///   65,536 entries.
/// Time grows with text length times table length, memory beyond text and table is bounded.
QString expressionTruthTable(const QString &text);

} // namespace KEO
