#pragma once

#include <QString>
#include <QtGlobal>

#include <optional>
#include <vector>

namespace KEO {

/// The answers of a condition for every state of its inputs. Bit k of an entry's number is the
/// state of input k.
struct TruthTable
{
    static constexpr int kMaxInputs = 16;

    int inputs = 0;
    /// 64 entries each, entry i in bit i % 64. A table of fewer repeats them throughout the word.
    std::vector<quint64> words{0};

    /// A table in which every entry has the same answer.
    [[nodiscard]] static TruthTable constant(int inputs, bool answer);
    /// Word \a word of the table whose answer is the state of its input \a input.
    [[nodiscard]] static quint64 inputWord(int input, size_t word);
    [[nodiscard]] quint32 size() const { return quint32(1) << inputs; }
    [[nodiscard]] bool at(quint32 entry) const { return (words[entry / 64] >> (entry % 64)) & 1; }
    /// The condition while input \a input is \a state; the inputs above move down by one.
    [[nodiscard]] TruthTable withFixed(int input, bool state) const;
    /// The same condition with further inputs, none of which makes a difference: \a places has a
    /// bit for each input of the new table, of \a newInputs, that is one of the old, lowest first.
    /// Old inputs that find no place are off.
    [[nodiscard]] TruthTable spreadOver(quint32 places, int newInputs) const;

    bool operator==(const TruthTable &) const = default;
};

/// The truth table of an expression text over the units that it names, the lowest-numbered one
/// first; nothing if the text can't be evaluated, see expressionTruthTable.
std::optional<TruthTable> evaluateExpression(const QString &text);

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
