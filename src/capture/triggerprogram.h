#pragma once

#include "matchunitwords.h"

#include <config/matchtype.h>
#include <trigger/truthtable.h>

#include <QList>
#include <QString>

#include <optional>
#include <vector>

namespace KEO {

struct CoreConfig;

/// A match unit in use, as the core is given it.
struct UnitProgram
{
    int unit = 0;                                  ///< its number, `M0` to `M15`
    int port = 0;                                  ///< index of the port that it compares
    int width = 0;                                 ///< of the port, in bits
    MatchFunction function = MatchFunction::Equal; ///< always a known one
    MatchUnitWords words;
    /// Matches after which the unit reports, 1 to 65,536; nothing for a unit without a counter,
    /// which reports each match. A unit with one reports from its last match on.
    std::optional<int> count;
    Counting counting = Counting::Total; ///< of matches that follow one another, or of all
};

/// An expression in force, as the core is given it.
struct ExpressionProgram
{
    int row = 0; ///< in the core's list of expressions
    QString text;
    bool isEvaluable = false; ///< else it never fires
    quint32 slots = 0;        ///< bit s: it looks at slot s
    /// By input number, in which bit s is what the unit of slot s reports.
    TruthTable table;
    /// Only in the design of a static core can an expression look at units without a slot, and what
    /// those report is not known: then `table` has a 1 where the expression is true whatever they
    /// report, and this one where it can be true. Else nothing.
    std::optional<TruthTable> possibleTable;

    /// Where it can be true.
    [[nodiscard]] const TruthTable &possible() const
    {
        return possibleTable ? *possibleTable : table;
    }
};

/// What a core is given of its trigger set-up, in the terms that the core works with: the units in
/// use stand in slots, what they report makes an input number, and the core triggers at an input
/// number for which an expression has a 1 in its truth table. Registers, the check of a set-up and
/// whatever evaluates it without a core all start from here.
struct TriggerProgram
{
    /// Where the truth tables come from.
    enum class Tables {
        Fixed,    ///< of a static core: in the design, by the expressions of its description
        Written,  ///< as in `expressions`
        AnyInput, ///< no expression is in force: the core is told to trigger at any input
        Kept      ///< nothing is written, so the core goes by what it holds already
    };

    QList<UnitProgram> units; ///< by slot
    Tables tables = Tables::Fixed;
    std::vector<ExpressionProgram> expressions; ///< in force, in the order of their tables
    /// Expressions in force, from the first on that has no place, whose tables are not written.
    qsizetype leftOut = 0;

    [[nodiscard]] quint32 inputCount() const { return quint32(1) << units.size(); }
    /// The slot of match unit \a unit, or -1.
    [[nodiscard]] int slotOf(int unit) const;
    /// Whether the core triggers at an input number; nothing if it goes by tables from before, or
    /// if that depends on units without a slot.
    [[nodiscard]] std::optional<bool> firesAt(quint32 input) const;
};

/// The units in use alone.
QList<UnitProgram> programUnits(const CoreConfig &core);

/// All of it. Expressions from the first on whose table has no address in 16 bits, or with which
/// the words of all tables would take more than 512 MiB, are left out, and the debug log says so: a
/// description from outside can ask for more than memory holds.
TriggerProgram triggerProgram(const CoreConfig &core);

} // namespace KEO
