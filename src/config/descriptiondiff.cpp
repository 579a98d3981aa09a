#include "descriptiondiff.h"

#include "matchtype.h"
#include "signaldiff.h"
#include "signalmatching.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>
#include <vector>

namespace KEO {

namespace {

using Subject = DescriptionChange::Subject;
using Action = DescriptionChange::Action;
using Origin = DescriptionChange::Origin;
using Changes = QList<DescriptionChange>;

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::DescriptionDiff)
};

/// One value of a record, as text.
struct Fact
{
    Subject subject;
    Origin origin;
    QString value;
};

QString text(int number)
{
    return QString::number(number);
}

QString text(bool flag)
{
    return flag ? Text::tr("yes") : Text::tr("no");
}

QString kindText(DescriptionKind kind)
{
    return kind == DescriptionKind::Lite ? QStringLiteral("Lite") : QStringLiteral("Standard");
}

QString typeText(MatchType type)
{
    const QString name = matchTypeText(type);
    return name.isEmpty() ? text(int(type)) : name;
}

QString functionText(MatchFunction function)
{
    const QString name = matchFunctionText(function);
    return name.isEmpty() ? text(int(function)) : name;
}

QList<Fact> factsOf(const CoreConfig &core)
{
    return {{Subject::SampleClock, Origin::Design, core.sample_clock},
            {Subject::TrigType, Origin::Design, text(core.trig_type)},
            {Subject::StorageDepth, Origin::Design, text(core.storage_depth)},
            {Subject::ModuleName, Origin::Design, core.module_name},
            {Subject::ExpressionType, Origin::Design,
             core.dynamic ? Text::tr("Dynamic") : Text::tr("Static")},
            {Subject::Windows, Origin::Saved, text(core.window_num)},
            {Subject::Amount, Origin::Saved, text(core.capture_amount)},
            {Subject::Position, Origin::Saved, text(core.trigger_pos)}};
}

QList<Fact> factsOf(const LiteCoreConfig &core)
{
    return {{Subject::SampleClock, Origin::Design, core.sample_clock},
            {Subject::TrigType, Origin::Design, text(core.trig_type)},
            {Subject::LiteAmount, Origin::Design, text(core.capture_amount)},
            {Subject::ModuleName, Origin::Design, core.module_name},
            {Subject::Implementation, Origin::Design, text(core.implemention)},
            {Subject::InputRegister, Origin::Design, text(core.input_register_enabled)},
            {Subject::InitData, Origin::Design, text(core.capture_init_data_enabled)}};
}

QList<Fact> factsOf(const MatchUnit &unit)
{
    return {
        {Subject::UnitPort, Origin::Design, unit.trigger ? text(unit.trigger->index) : QString()},
        {Subject::MatchType, Origin::Design, typeText(unit.match_type)},
        {Subject::HasCounter, Origin::Design, text(unit.counter_enable)},
        {Subject::CounterWidth, Origin::Design, text(unit.counter_width)},
        {Subject::Function, Origin::Saved, functionText(unit.func)},
        {Subject::Value, Origin::Saved, unit.value0},
        {Subject::Maximum, Origin::Saved, unit.value1},
        {Subject::Count, Origin::Saved, text(unit.counter)},
        {Subject::Continuous, Origin::Saved, text(unit.countinuous)}};
}

/// What differs in the facts that both have.
Changes factChanges(const QList<Fact> &before, const QList<Fact> &after)
{
    Changes changes;
    for (const Fact &fact : before) {
        const auto other = std::ranges::find(after, fact.subject, &Fact::subject);
        if (other != after.end() && other->value != fact.value)
            changes.append({.subject = fact.subject,
                            .origin = fact.origin,
                            .before = fact.value,
                            .after = other->value});
    }
    return changes;
}

/// "Range on port 0"
QString unitText(const MatchUnit &unit)
{
    const QString type = typeText(unit.match_type);
    return unit.trigger ? Text::tr("%1 on port %2").arg(type, text(unit.trigger->index)) : type;
}

Changes unitChanges(const MatchUnit &before, const MatchUnit &after)
{
    Changes changes;
    if (before.enabled && !after.enabled)
        changes = {
            {.subject = Subject::Unit, .action = Action::Removed, .before = unitText(before)}};
    else if (!before.enabled && after.enabled)
        changes = {{.subject = Subject::Unit, .action = Action::Added, .after = unitText(after)}};
    else
        changes = factChanges(factsOf(before), factsOf(after));
    for (DescriptionChange &change : changes)
        change.unit = after.index;
    return changes;
}

Changes expressionChanges(const CoreConfig &before, const CoreConfig &after)
{
    Changes changes;
    for (const SignalMatch &match : matchSignals(before.expressions, after.expressions)) {
        if (match.kind == SignalMatch::Kept)
            continue;
        DescriptionChange change{.subject = Subject::Expression,
                                 .origin = after.dynamic ? Origin::Saved : Origin::Design};
        if (match.kind == SignalMatch::Moved) {
            change.action = Action::Moved;
            change.name = after.expressions[match.after];
            change.before = text(match.before);
            change.after = text(match.after);
        } else {
            if (match.before < 0)
                change.action = Action::Added;
            else if (match.after < 0)
                change.action = Action::Removed;
            change.before = match.before < 0 ? QString() : before.expressions[match.before];
            change.after = match.after < 0 ? QString() : after.expressions[match.after];
        }
        changes.append(change);
    }
    return changes;
}

/// What standard cores alone have.
Changes triggerChanges(const CoreConfig &before, const CoreConfig &after)
{
    Changes changes;
    for (int i = 0; i < CoreConfig::kPorts; ++i) {
        for (DescriptionChange &change :
             signalChanges(before.triggers[i]->signals, after.triggers[i]->signals)) {
            change.port = i;
            changes.append(change);
        }
    }
    for (int i = 0; i < CoreConfig::kUnits; ++i)
        changes += unitChanges(*before.matchUnits[i], *after.matchUnits[i]);
    return changes + expressionChanges(before, after);
}

/// A core of either kind; borrowed.
struct CoreView
{
    const CoreConfig *standard = nullptr;
    const LiteCoreConfig *lite = nullptr;

    [[nodiscard]] int number() const { return standard ? standard->index : lite->index; }
    [[nodiscard]] const QList<SignalEntry> &signals() const
    {
        return standard ? standard->signals : lite->signals;
    }
    [[nodiscard]] QList<Fact> facts() const
    {
        return standard ? factsOf(*standard) : factsOf(*lite);
    }
    /// What there is to say of a core that came or went.
    [[nodiscard]] QString text() const
    {
        const QString clock = standard ? standard->sample_clock : lite->sample_clock;
        const QString count = Text::tr("signals: %1").arg(signalBits(signals()));
        return clock.isEmpty() ? count : Text::tr("clock %1, %2").arg(clock, count);
    }
};

std::vector<CoreView> coresOf(const LoadedDescription &description)
{
    std::vector<CoreView> cores;
    for (const auto &core : description.standard)
        cores.push_back({core.get(), nullptr});
    for (const LiteCoreConfig &core : description.lite)
        cores.push_back({nullptr, &core});
    return cores;
}

QStringList numbersOf(const std::vector<CoreView> &cores)
{
    QStringList numbers;
    for (const CoreView &core : cores)
        numbers += text(core.number());
    return numbers;
}

Changes coreChanges(const CoreView &before, const CoreView &after)
{
    Changes changes = factChanges(before.facts(), after.facts());
    changes += signalChanges(before.signals(), after.signals());
    if (before.standard && after.standard)
        changes += triggerChanges(*before.standard, *after.standard);
    for (DescriptionChange &change : changes)
        change.core = after.number();
    return changes;
}

Changes headChanges(const LoadedDescription &before, const LoadedDescription &after)
{
    const Origin ofId = before.id.isEmpty() || after.id.isEmpty() ? Origin::Saved : Origin::Design;
    return factChanges({{Subject::Kind, Origin::Design, kindText(before.kind)},
                        {Subject::CheckValue, ofId, before.id},
                        {Subject::Version, Origin::Saved, before.version}},
                       {{Subject::Kind, Origin::Design, kindText(after.kind)},
                        {Subject::CheckValue, ofId, after.id},
                        {Subject::Version, Origin::Saved, after.version}});
}

} // namespace

QList<DescriptionChange> descriptionChanges(const LoadedDescription &before,
                                            const LoadedDescription &after)
{
    Changes changes = headChanges(before, after);
    const std::vector<CoreView> cores = coresOf(before);
    const std::vector<CoreView> newCores = coresOf(after);
    const QStringList numbers = numbersOf(cores);
    const QStringList newNumbers = numbersOf(newCores);
    const QList<SignalMatch> matches = matchSignals(numbers, newNumbers);
    if (std::ranges::any_of(
            matches, [](const SignalMatch &match) { return match.kind == SignalMatch::Moved; }))
        changes.append({.subject = Subject::CoreOrder,
                        .before = numbers.join(QLatin1String(", ")),
                        .after = newNumbers.join(QLatin1String(", "))});
    for (const auto &[kind, from, to] : matches) {
        // A core with another number is another core.
        const bool isSame = kind == SignalMatch::Kept || kind == SignalMatch::Moved;
        if (isSame) {
            changes += coreChanges(cores[from], newCores[to]);
            continue;
        }
        if (from >= 0)
            changes.append({.subject = Subject::Core,
                            .action = Action::Removed,
                            .core = cores[from].number(),
                            .before = cores[from].text()});
        if (to >= 0)
            changes.append({.subject = Subject::Core,
                            .action = Action::Added,
                            .core = newCores[to].number(),
                            .after = newCores[to].text()});
    }
    return changes;
}

} // namespace KEO
