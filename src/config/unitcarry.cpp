#include "unitcarry.h"

#include "capturelimits.h"
#include "carryaccount.h"
#include "coreconfig.h"
#include "settingscarry.h"

#include <algorithm>
#include <optional>

namespace KEO {

namespace {

QString unitText(const MatchUnit &unit)
{
    return QStringLiteral("M%1").arg(unit.index);
}

QStringList portNames(const MatchUnit &unit)
{
    return unit.trigger ? unit.trigger->flatSignalNames() : QStringList();
}

struct Comparison
{
    MatchFunction function = MatchFunction::Equal;
    QString value0;
    QString value1; ///< of a range; else empty

    bool operator==(const Comparison &other) const = default;
};

Comparison comparisonOf(const MatchUnit &unit)
{
    return {unit.func, unit.value0, isRangeFunction(unit.func) ? unit.value1 : QString()};
}

QString comparisonText(const Comparison &comparison)
{
    const QString text = matchFunctionText(comparison.function) + u' ' + comparison.value0;
    return isRangeFunction(comparison.function) ? text + QStringLiteral("..") + comparison.value1
                                                : text;
}

bool isStandard(const Comparison &comparison)
{
    return comparison.function == MatchFunction::Equal &&
           std::ranges::all_of(comparison.value0, [](QChar c) { return c == u'X'; });
}

bool isEdge(QChar letter)
{
    return QStringLiteral("RFBN").contains(letter);
}

/// A comparison on its way into a unit. Without a function there is nothing left of it.
struct MovedComparison
{
    std::optional<Comparison> comparison;
    QString reason; ///< empty if nothing of its meaning is lost
};

/// Each bit goes where its signal went.
MovedComparison moveBits(const MatchUnit &before, const MatchUnit &now)
{
    const QStringList oldNames = portNames(before);
    const QStringList newNames = portNames(now);
    // A shorter value means its number: that is how the core gets it.
    const QString bits = before.value0.rightJustified(oldNames.size(), u'0', true);
    const bool hasLetters = hasEdges(now.match_type) || !hasEdges(before.match_type);
    const QList<int> places = positionsByName(oldNames, newNames);
    QString value(newNames.size(), u'X');
    QStringList gone;
    QStringList withoutEdges;
    int compared = 0;
    for (int bit = 0; bit < bits.size(); ++bit) {
        if (bits[bit] == u'X')
            continue;
        if (places[bit] < 0) {
            gone.append(oldNames[bit]);
        } else if (isEdge(bits[bit]) && !hasLetters) {
            withoutEdges.append(oldNames[bit]);
        } else {
            value[places[bit]] = bits[bit];
            ++compared;
        }
    }
    QStringList reasons;
    if (!gone.isEmpty())
        reasons.append(
            CarryText::tr("No longer on its port: %1.").arg(gone.join(QStringLiteral(", "))));
    if (!withoutEdges.isEmpty())
        reasons.append(
            CarryText::tr("The new match type, %1, sees no edges: %2.")
                .arg(matchTypeText(now.match_type), withoutEdges.join(QStringLiteral(", "))));
    const QString reason = reasons.join(u' ');
    if (compared == 0 && !reasons.isEmpty())
        return {{}, reason};
    return {Comparison{before.func, value, {}}, reason};
}

/// \a now is in use, or stands as the old unit did.
MovedComparison moveComparison(const MatchUnit &before, const MatchUnit &now)
{
    const Comparison comparison = comparisonOf(before);
    if (comparison == comparisonOf(now) && portNames(before) == portNames(now))
        return {comparison, {}};
    const bool isSameType = before.match_type == now.match_type;
    if (!isSameType && !functionsForMatchType(now.match_type).contains(before.func))
        return {{},
                CarryText::tr("The new match type, %1, has no %2.")
                    .arg(matchTypeText(now.match_type), matchFunctionText(before.func))};
    const bool isSamePort = portNames(before) == portNames(now);
    if (isSamePort && (!isEqualityFunction(before.func) || hasEdges(now.match_type) ||
                       !std::ranges::any_of(comparison.value0, isEdge) || isSameType))
        return {comparison, {}};
    if (isEqualityFunction(before.func))
        return moveBits(before, now);
    return {{},
            CarryText::tr("Its port has other signals, or in another order: the number would mean "
                          "something else.")};
}

QString notInUse(const MatchUnit &unit)
{
    return CarryText::tr("The new design does not use match unit %1.").arg(unitText(unit));
}

void carryComparison(const MatchUnit &before, MatchUnit &now, CarryAccount &account)
{
    const Comparison old = comparisonOf(before);
    const Comparison brought = comparisonOf(now);
    const MovedComparison moved =
        now.enabled ? moveComparison(before, now) : MovedComparison{{}, notInUse(now)};
    if (moved.comparison) {
        now.func = moved.comparison->function;
        now.value0 = moved.comparison->value0;
        // One that the function does not use is as good as the port is the same.
        if (portNames(before) == portNames(now))
            now.value1 = before.value1;
    }
    if (isStandard(old) && (!now.enabled || old == brought))
        return;
    const QString setting = CarryText::tr("%1 comparison").arg(unitText(before));
    const Comparison is = comparisonOf(now);
    if (!moved.comparison)
        account.add(CarryOutcome::Lost, setting, comparisonText(old), comparisonText(is),
                    moved.reason);
    else if (is == old && moved.reason.isEmpty())
        account.add(CarryOutcome::Kept, setting, comparisonText(old), comparisonText(is));
    else
        account.add(
            CarryOutcome::Adapted, setting, comparisonText(old), comparisonText(is),
            moved.reason.isEmpty()
                ? CarryText::tr("Each bit went with its signal; new signals are not compared.")
                : moved.reason);
}

QString countText(const MatchUnit &unit)
{
    if (!unit.counter_enable)
        return CarryText::tr("no counter");
    return unit.countinuous ? CarryText::tr("%1 continuous").arg(unit.counter)
                            : QString::number(unit.counter);
}

void carryCount(const MatchUnit &before, MatchUnit &now, CarryAccount &account)
{
    if (!before.counter_enable)
        return;
    const MatchUnit standard;
    const bool isSame = now.counter_enable && now.counter == before.counter &&
                        now.countinuous == before.countinuous;
    const bool isStandard =
        before.counter == standard.counter && before.countinuous == standard.countinuous;
    const QString setting = CarryText::tr("%1 count").arg(unitText(before));
    const auto tell = [&](CarryOutcome outcome, const QString &reason = {}) {
        if (!isStandard || !isSame)
            account.add(outcome, setting, countText(before), countText(now), reason);
    };
    if (!now.enabled || !now.counter_enable) {
        if (!isStandard)
            tell(CarryOutcome::Lost,
                 now.enabled ? CarryText::tr("The new match unit has no counter.") : notInUse(now));
        return;
    }
    const int most = greatestCount(now.counter_width);
    const bool fits = before.counter <= most ||
                      before.counter > greatestCount(before.counter_width); // not by its user
    now.counter = fits ? before.counter : most;
    now.countinuous = before.countinuous;
    tell(fits ? CarryOutcome::Kept : CarryOutcome::Adapted,
         fits ? QString() : CarryText::tr("The new counter counts to %1.").arg(most));
}

} // namespace

void carryUnit(const MatchUnit &before, MatchUnit &now, CarryAccount &account)
{
    carryComparison(before, now, account);
    carryCount(before, now, account);
}

} // namespace KEO
