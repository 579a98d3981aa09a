#include "settingscarry.h"

#include "capturelimits.h"
#include "litecoreconfig.h"
#include "signalmatching.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::SettingsCarry)
};

/// Takes the entries of one core.
class Account
{
public:
    explicit Account(const QString &place) : m_place(place) {}

    /// From now on everything is lost for that reason.
    void lose(const QString &reason) { m_loss = reason; }
    void add(CarryOutcome outcome, const QString &setting, const QString &before,
             const QString &after, const QString &reason = {})
    {
        if (m_loss.isEmpty())
            m_entries.append({outcome, m_place, setting, before, after, reason});
        else
            m_entries.append({CarryOutcome::Lost, m_place, setting, before, {}, m_loss});
    }
    [[nodiscard]] const CarriedSettings &entries() const { return m_entries; }

private:
    QString m_place;
    QString m_loss;
    CarriedSettings m_entries;
};

QString coreText(int index)
{
    return Text::tr("Core %1").arg(index);
}

QString onOff(bool isOn)
{
    return isOn ? Text::tr("on") : Text::tr("off");
}

// Windows, amount and position.

/// What the memory of \a core holds of \a asked; \a brought if it holds nothing.
CaptureNumbers heldNumbers(const CoreConfig &core, const CaptureNumbers &asked,
                           const CaptureNumbers &brought)
{
    if (asked == brought || !memoryObstacle(core, asked))
        return asked;
    CaptureNumbers held = asked;
    QList<int> amounts = offeredAmounts(core.storage_depth, held.windows);
    while (amounts.isEmpty() && held.windows > 1)
        amounts = offeredAmounts(core.storage_depth, --held.windows);
    if (amounts.isEmpty())
        return brought;
    if (memoryObstacle(core, {held.windows, asked.amount, 0})) {
        const auto above = std::ranges::upper_bound(amounts, asked.amount);
        held.amount = above == amounts.begin() ? *above : *(above - 1);
    }
    held.position = std::clamp(asked.position, 0, std::max(0, held.amount - kMinRowsFromTrigger));
    return memoryObstacle(core, held) ? brought : held;
}

void tellNumber(Account &account, const QString &setting, int standard, int CaptureNumbers::*number,
                const CaptureNumbers &asked, const CaptureNumbers &brought,
                const CaptureNumbers &held, const QString &memory)
{
    if (asked.*number == standard && brought.*number == standard)
        return;
    const bool isKept = held.*number == asked.*number;
    const auto changed = held == brought ? CarryOutcome::Lost : CarryOutcome::Adapted;
    account.add(isKept ? CarryOutcome::Kept : changed, setting, QString::number(asked.*number),
                QString::number(held.*number), isKept ? QString() : memory);
}

void carryNumbers(const CoreConfig &before, CoreConfig &now, Account &account)
{
    const CaptureNumbers brought{now.window_num, now.capture_amount, now.trigger_pos};
    CaptureNumbers asked{before.window_num, before.capture_amount, before.trigger_pos};
    // A page whose field offers nothing of the kind leaves 0 behind: nothing was chosen.
    if (asked.windows < 1)
        asked.windows = brought.windows;
    if (asked.amount < 1)
        asked.amount = brought.amount;
    const CaptureNumbers held = heldNumbers(now, asked, brought);
    now.window_num = held.windows;
    now.capture_amount = held.amount;
    now.trigger_pos = held.position;
    const CoreConfig standard;
    const QString memory =
        Text::tr("The new core has memory for %1 samples.").arg(now.storage_depth);
    const QString tail =
        Text::tr("%1 A window keeps %2 from the trigger on.").arg(memory).arg(kMinRowsFromTrigger);
    tellNumber(account, Text::tr("Windows"), standard.window_num, &CaptureNumbers::windows, asked,
               brought, held, memory);
    tellNumber(account, Text::tr("Capture amount"), standard.capture_amount,
               &CaptureNumbers::amount, asked, brought, held, memory);
    tellNumber(account, Text::tr("Trigger position"), standard.trigger_pos,
               &CaptureNumbers::position, asked, brought, held, tail);
}

// Match units.

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
        reasons.append(Text::tr("No longer on its port: %1.").arg(gone.join(QStringLiteral(", "))));
    if (!withoutEdges.isEmpty())
        reasons.append(
            Text::tr("The new match type, %1, sees no edges: %2.")
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
                Text::tr("The new match type, %1, has no %2.")
                    .arg(matchTypeText(now.match_type), matchFunctionText(before.func))};
    const bool isSamePort = portNames(before) == portNames(now);
    if (isSamePort && (!isEqualityFunction(before.func) || hasEdges(now.match_type) ||
                       !std::ranges::any_of(comparison.value0, isEdge) || isSameType))
        return {comparison, {}};
    if (isEqualityFunction(before.func))
        return moveBits(before, now);
    return {{},
            Text::tr("Its port has other signals, or in another order: the number would mean "
                     "something else.")};
}

QString notInUse(const MatchUnit &unit)
{
    return Text::tr("The new design does not use match unit %1.").arg(unitText(unit));
}

void carryComparison(const MatchUnit &before, MatchUnit &now, Account &account)
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
    const QString setting = Text::tr("%1 comparison").arg(unitText(before));
    const Comparison is = comparisonOf(now);
    if (!moved.comparison)
        account.add(CarryOutcome::Lost, setting, comparisonText(old), comparisonText(is),
                    moved.reason);
    else if (is == old && moved.reason.isEmpty())
        account.add(CarryOutcome::Kept, setting, comparisonText(old), comparisonText(is));
    else
        account.add(CarryOutcome::Adapted, setting, comparisonText(old), comparisonText(is),
                    moved.reason.isEmpty()
                        ? Text::tr("Each bit went with its signal; new signals are not compared.")
                        : moved.reason);
}

QString countText(const MatchUnit &unit)
{
    if (!unit.counter_enable)
        return Text::tr("no counter");
    return unit.countinuous ? Text::tr("%1 continuous").arg(unit.counter)
                            : QString::number(unit.counter);
}

void carryCount(const MatchUnit &before, MatchUnit &now, Account &account)
{
    if (!before.counter_enable)
        return;
    const MatchUnit standard;
    const bool isSame = now.counter_enable && now.counter == before.counter &&
                        now.countinuous == before.countinuous;
    const bool isStandard =
        before.counter == standard.counter && before.countinuous == standard.countinuous;
    const QString setting = Text::tr("%1 count").arg(unitText(before));
    const auto tell = [&](CarryOutcome outcome, const QString &reason = {}) {
        if (!isStandard || !isSame)
            account.add(outcome, setting, countText(before), countText(now), reason);
    };
    if (!now.enabled || !now.counter_enable) {
        if (!isStandard)
            tell(CarryOutcome::Lost,
                 now.enabled ? Text::tr("The new match unit has no counter.") : notInUse(now));
        return;
    }
    const int most = greatestCount(now.counter_width);
    const bool fits = before.counter <= most ||
                      before.counter > greatestCount(before.counter_width); // not by its user
    now.counter = fits ? before.counter : most;
    now.countinuous = before.countinuous;
    tell(fits ? CarryOutcome::Kept : CarryOutcome::Adapted,
         fits ? QString() : Text::tr("The new counter counts to %1.").arg(most));
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

void carryExpressions(const CoreConfig &before, CoreConfig &now, Account &account)
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

void carryNames(const QList<SignalEntry> &before, QList<SignalEntry> &now, Account &account)
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
void carryCore(const CoreConfig &before, bool isFirst, CoreConfig &now, Account &account)
{
    const bool runs = before.active != 0;
    if (runs != isFirst || runs != (now.active != 0))
        account.add(CarryOutcome::Kept, Text::tr("Check mark"), onOff(runs), onOff(runs));
    now.active = runs ? 1 : 0;
    carryNumbers(before, now, account);
    for (const MatchUnit *unit : before.enabledUnits()) {
        MatchUnit &target = *now.matchUnitByIndex(unit->index);
        carryComparison(*unit, target, account);
        carryCount(*unit, target, account);
    }
    carryExpressions(before, now, account);
    carryNames(before.signals, now.signals, account);
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
        Account account(coreText(index));
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
        carryCore(*before[old], old == 0, target, account);
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
    Account account(coreText(before.index));
    carryNames(before.signals, now.signals, account);
    return account.entries();
}

CarriedSettings lostSettings(const CoreList &before)
{
    return carrySettings(before, {}).account;
}

CarriedSettings lostSettings(const LiteCoreConfig &before)
{
    Account account(coreText(before.index));
    account.lose(Text::tr("The new design has no such core."));
    QList<SignalEntry> none;
    carryNames(before.signals, none, account);
    return account.entries();
}

} // namespace KEO
