#pragma once

#include "portsamples.h"

#include <config/matchtype.h>

#include <QChar>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace KEO {

struct CoreConfig;

/// A match unit's comparison and counter as they are to be.
struct UnitChange
{
    int unit = 0;
    MatchFunction func = MatchFunction::Equal;
    QString value0;
    QString value1;
    int counter = 1;
    bool continuous = false;

    bool operator==(const UnitChange &) const = default;
};

/// An expression as it is to be.
struct ExpressionChange
{
    int row = 0;
    QString text;
    bool isEnabled = true;

    bool operator==(const ExpressionChange &) const = default;
};

/// What is to be set of a core's trigger.
struct TriggerChanges
{
    QList<UnitChange> units;
    std::optional<ExpressionChange> expression; ///< of a dynamic core

    [[nodiscard]] bool isEmpty() const { return units.isEmpty() && !expression; }
    bool operator==(const TriggerChanges &) const = default;
};

/// Sets them, and gives the changes that take them back. Units and rows must be those of the core.
TriggerChanges applyChanges(const TriggerChanges &changes, CoreConfig &core);

/// What a captured signal is to be like at the sample that triggers.
struct WantedBit
{
    QString name;       ///< as the design has it
    QChar state = u'0'; ///< as in MatchUnit::value0: 0, 1, or one of the edges R F B N

    bool operator==(const WantedBit &) const = default;
};

/// How a core could be made to trigger at one sample of a window, with the ports, types, counters
/// and expressions that its design gives it.
struct TriggerProposal
{
    TriggerChanges changes;
    QString expression;  ///< the one that is true there, "exp1"; empty if there is no way
    QStringList steps;   ///< each change, a sentence each
    QStringList remarks; ///< what else the changes touch, and what triggers besides
    QStringList leftOut; ///< what can't be looked for, and why
    QString refusal;     ///< why there is no way; empty if there is one

    [[nodiscard]] bool isPossible() const { return refusal.isEmpty(); }
};

/// Looks for \a wanted with as few units as it finds, rather with units that no other expression in
/// force looks at. What no unit in use can look for is left out, and there is no way if that is all
/// of it. A core that \a proposal changes and that is evaluated over \a ports is known to trigger
/// at \a sample. \a core is lent the changes, and has what it had when this returns.
[[nodiscard]] TriggerProposal proposeTrigger(CoreConfig &core, const QList<WantedBit> &wanted,
                                             const PortSamples &ports, qsizetype sample);

} // namespace KEO
