#include "settingscarry.h"

#include "carryaccount.h"
#include "litecoreconfig.h"
#include "numberscarry.h"
#include "signalmatching.h"
#include "unitcarry.h"

#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace KEO {

namespace {

using Text = CarryText;

QString coreText(int index)
{
    return Text::tr("Core %1").arg(index);
}

QString onOff(bool isOn)
{
    return isOn ? Text::tr("on") : Text::tr("off");
}

// Expressions.

/// What an expression names that the old core had and the new one has not.
QStringList missingUnits(const QString &expression, const CoreConfig &before, const CoreConfig &now)
{
    static const QRegularExpression name(QStringLiteral("M([0-9]+)"));
    QStringList missing;
    for (auto match = name.globalMatch(expression); match.hasNext();) {
        const auto each = match.next();
        const MatchUnit *old = before.matchUnitByIndex(each.captured(1).toInt());
        if (old && old->isInUse() && !now.matchUnitByIndex(old->index)->isInUse() &&
            !missing.contains(each.captured()))
            missing.append(each.captured());
    }
    return missing;
}

/// Why expression \a row has no place in the new core; empty if it has one.
QString expressionLoss(int row, const CoreConfig &before, const CoreConfig &now)
{
    const QString &expression = before.expressions[row];
    if (now.expressions.value(row) == expression && row < now.expressions.size() &&
        missingUnits(expression, before, now).isEmpty())
        return {};
    if (!now.dynamic)
        return Text::tr("The expressions of the new core are fixed in the design.");
    if (row >= now.expressions.size())
        return Text::tr("The new core has %1 expressions.").arg(now.expressions.size());
    const QStringList missing = missingUnits(expression, before, now);
    if (!missing.isEmpty())
        return Text::tr("The new design does not use %1.").arg(missing.join(QStringLiteral(", ")));
    return {};
}

QList<bool> flagsOf(const CoreConfig &core)
{
    return core.expressionEnabled.size() == core.expressions.size()
               ? core.expressionEnabled
               : QList<bool>(core.expressions.size(), true);
}

void carryExpressions(const CoreConfig &before, CoreConfig &now, CarryAccount &account)
{
    if (!before.dynamic) // then they are the design's
        return;
    const QList<bool> oldFlags = flagsOf(before);
    QList<bool> flags = flagsOf(now);
    for (int row = 0; row < before.expressions.size(); ++row) {
        const QString loss = expressionLoss(row, before, now);
        const QString setting = Text::tr("Expression %1").arg(row);
        if (loss.isEmpty())
            now.setExpression(before.expressions[row], row);
        account.add(loss.isEmpty() ? CarryOutcome::Kept : CarryOutcome::Lost, setting,
                    before.expressions[row], now.expressions.value(row), loss);
        const bool hasMark = now.dynamic && row < flags.size();
        if (hasMark)
            flags[row] = oldFlags[row];
        if (!oldFlags[row])
            account.add(hasMark ? CarryOutcome::Kept : CarryOutcome::Lost,
                        Text::tr("Check mark of expression %1").arg(row), onOff(false),
                        hasMark ? onOff(false) : QString(),
                        hasMark ? QString() : Text::tr("The new core has no such check mark."));
    }
    if (!now.dynamic)
        return;
    for (int row = int(before.expressions.size()); row < flags.size(); ++row) {
        flags[row] = false;
        account.add(CarryOutcome::Adapted, Text::tr("Check mark of expression %1").arg(row), {},
                    onOff(false),
                    Text::tr("The expression is new; with it the core would trigger otherwise."));
    }
    if (!now.expressionEnabled.isEmpty() || !before.expressionEnabled.isEmpty() ||
        flags.contains(false))
        now.expressionEnabled = flags;
}

// Names of captured signals.

void carryNames(const QList<SignalEntry> &before, QList<SignalEntry> &now, CarryAccount &account)
{
    const QStringList oldNames = flatSignalNames(before);
    const QStringList oldTexts = flatSignalTexts(before);
    const QStringList newNames = flatSignalNames(now);
    const QStringList newTexts = flatSignalTexts(now);
    const QList<int> places = positionsByName(oldNames, newNames);
    QMap<int, SignalNames> table;
    for (int bit = 0; bit < newNames.size(); ++bit)
        table.insert(bit, {newNames[bit], newTexts[bit]});
    for (int bit = 0; bit < oldNames.size(); ++bit) {
        const bool isThere = places[bit] >= 0;
        const QString brought = isThere ? newTexts[places[bit]] : QString();
        if (isThere)
            table[places[bit]].text = oldTexts[bit];
        if (oldTexts[bit].isEmpty() && brought.isEmpty())
            continue;
        account.add(isThere ? CarryOutcome::Kept : CarryOutcome::Lost,
                    Text::tr("Name of %1").arg(oldNames[bit]), oldTexts[bit],
                    isThere ? oldTexts[bit] : QString(),
                    isThere ? QString() : Text::tr("The core does not capture it any more."));
    }
    applySignalNames(now, table);
}

// Cores.

/// For each of \a before the position in \a now, or -1.
QList<int> matchCores(const CoreList &before, const CoreList &now)
{
    QList<int> found(qsizetype(before.size()), -1);
    QList<bool> isTaken(qsizetype(now.size()), false);
    using Rule = bool (*)(const CoreConfig &, const CoreConfig &);
    const auto claimants = [&](const CoreConfig &core, Rule rule) {
        qsizetype count = 0;
        for (size_t old = 0; old < before.size(); ++old)
            count += found[qsizetype(old)] < 0 && rule(*before[old], core) ? 1 : 0;
        return count;
    };
    const auto match = [&](Rule rule, bool onlyIfAlone) {
        QList<std::pair<qsizetype, int>> pairs;
        for (size_t old = 0; old < before.size(); ++old) {
            QList<int> candidates;
            for (int core = 0; core < int(now.size()) && found[qsizetype(old)] < 0; ++core) {
                if (!isTaken[core] && rule(*before[old], *now[size_t(core)]))
                    candidates.append(core);
            }
            const bool isAlone =
                candidates.size() == 1 && claimants(*now[size_t(candidates.first())], rule) == 1;
            if (onlyIfAlone ? isAlone : !candidates.isEmpty())
                pairs.append({qsizetype(old), candidates.first()});
        }
        for (const auto &[old, core] : std::as_const(pairs)) {
            if (!std::exchange(isTaken[core], true))
                found[old] = core;
        }
    };
    match([](const CoreConfig &a,
             const CoreConfig &b) { return a.index == b.index && a.module_name == b.module_name; },
          false);
    match(
        [](const CoreConfig &a, const CoreConfig &b) {
            return a.module_name == b.module_name && a.sample_clock == b.sample_clock;
        },
        true);
    match([](const CoreConfig &a, const CoreConfig &b) { return a.index == b.index; }, false);
    return found;
}

/// \a isFirst: of the old cores, which is in the run unless its user decides otherwise.
/// Gives the numbers that the new core can't hold, see SettingsCarry.
std::optional<CaptureNumbers> carryCore(const CoreConfig &before, bool isFirst, CoreConfig &now,
                                        CarryAccount &account)
{
    const bool runs = before.active != 0;
    if (runs != isFirst || runs != (now.active != 0))
        account.add(CarryOutcome::Kept, Text::tr("Check mark"), onOff(runs), onOff(runs));
    now.active = runs ? 1 : 0;
    const std::optional<CaptureNumbers> unheld = carryNumbers(before, now, account);
    for (const MatchUnit *unit : before.enabledUnits()) {
        carryUnit(*unit, *now.matchUnitByIndex(unit->index), account);
    }
    carryExpressions(before, now, account);
    carryNames(before.signals, now.signals, account);
    return unheld;
}

} // namespace

QList<int> positionsByName(const QStringList &before, const QStringList &now)
{
    QList<int> positions(before.size(), -1);
    for (const SignalMatch &match : matchSignals(before, now)) {
        if (match.kind == SignalMatch::Kept || match.kind == SignalMatch::Moved)
            positions[match.before] = match.after;
    }
    return positions;
}

SettingsCarry carrySettings(const CoreList &before, const CoreList &now)
{
    SettingsCarry carry;
    const QList<int> places = matchCores(before, now);
    for (size_t old = 0; old < before.size(); ++old) {
        const int place = places[qsizetype(old)];
        const int index = before[old]->index;
        CarryAccount account(coreText(index));
        CoreConfig absent(index);
        absent.storage_depth = 0;
        CoreConfig &target = place < 0 ? absent : *now[size_t(place)];
        if (place < 0) {
            absent.active = old == 0 ? 1 : 0;
            account.lose(Text::tr("The new design has no such core."));
        } else {
            carry.cores.insert(index, target.index);
        }
        if (place >= 0 && target.index != index)
            account.add(CarryOutcome::Adapted, Text::tr("Number"), QString::number(index),
                        QString::number(target.index),
                        Text::tr("It is found again by its module, %1, and its clock.")
                            .arg(target.module_name));
        const auto unheld = carryCore(*before[old], old == 0, target, account);
        if (unheld && place >= 0)
            carry.unheld.insert(target.index, *unheld);
        carry.account += account.entries();
    }
    const bool isNew = !now.empty() && !places.contains(0);
    if (isNew && now.front()->active != 0 && !carry.cores.isEmpty()) {
        now.front()->active = 0;
        carry.account.append({CarryOutcome::Adapted,
                              coreText(now.front()->index),
                              Text::tr("Check mark"),
                              {},
                              onOff(false),
                              Text::tr("The core is new.")});
    }
    return carry;
}

CarriedSettings carrySettings(const LiteCoreConfig &before, LiteCoreConfig &now)
{
    CarryAccount account(coreText(before.index));
    carryNames(before.signals, now.signals, account);
    return account.entries();
}

CarriedSettings lostSettings(const CoreList &before)
{
    return carrySettings(before, {}).account;
}

CarriedSettings lostSettings(const LiteCoreConfig &before)
{
    CarryAccount account(coreText(before.index));
    account.lose(Text::tr("The new design has no such core."));
    QList<SignalEntry> none;
    carryNames(before.signals, none, account);
    return account.entries();
}

} // namespace KEO
