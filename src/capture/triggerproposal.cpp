#include "triggerproposal.h"

#include "triggerevaluation.h"

#include <config/coreconfig.h>
#include <trigger/unitsetting.h>

#include <QCoreApplication>
#include <QHash>

#include <algorithm>
#include <bit>
#include <utility>
#include <vector>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::TriggerProposal)
};

constexpr qsizetype kNamed = 4; // signals that a sentence names

QString unitName(int unit)
{
    return QStringLiteral("M%1").arg(unit);
}

QString expressionName(int row)
{
    return QStringLiteral("exp%1").arg(row);
}

QString joined(QStringList names)
{
    if (names.size() > kNamed) {
        const qsizetype more = names.size() - kNamed + 1;
        names = names.first(kNamed - 1);
        names.append(Text::tr("%1 more").arg(more));
    }
    if (names.size() <= 1)
        return names.value(0);
    const QString last = names.takeLast();
    return Text::tr("%1 and %2").arg(names.join(QStringLiteral(", ")), last);
}

bool isEdge(QChar state)
{
    return state != u'0' && state != u'1';
}

/// The unit tells equal from other values, as every type that has a name does.
bool comparesEqual(const MatchUnit &unit)
{
    return functionsForMatchType(unit.match_type).contains(MatchFunction::Equal);
}

/// The way in which a unit reports a pattern: where it is there, or where it is not.
enum class Report { Where, WhereNot };

UnitChange pattern(const MatchUnit &unit, const QString &value, Report report)
{
    UnitChange change;
    change.unit = unit.index;
    change.func = report == Report::Where ? MatchFunction::Equal : MatchFunction::NotEqual;
    change.value0 = value;
    change.value1 = unit.value1;
    change.counter = unit.counter;
    change.continuous = unit.countinuous;
    if (unit.counter_enable) {
        change.counter = 1;
        change.continuous = true; // or it would go on to report after its match
    }
    return change;
}

UnitChange settingsOf(const MatchUnit &unit)
{
    return {unit.index, unit.func, unit.value0, unit.value1, unit.counter, unit.countinuous};
}

/// A unit that could take part, with what it could look for.
struct Candidate
{
    const MatchUnit *unit = nullptr;
    int slot = 0;
    QString value;             ///< for its port, X where nothing is wanted
    QList<qsizetype> covers{}; ///< positions of what is wanted
};

/// A group of candidates that looks for all that can be looked for.
using Team = std::vector<const Candidate *>;

/// Makes one proposal.
class Proposer final
{
public:
    Proposer(CoreConfig &core, const QList<WantedBit> &wanted, const PortSamples &ports,
             qsizetype sample)
        : m_core(core),
          m_wanted(wanted),
          m_ports(ports),
          m_sample(sample),
          m_program(triggerProgram(core))
    {
    }

    TriggerProposal propose();

private:
    void findCandidates();
    void leaveOut();
    [[nodiscard]] std::optional<Team> teamOf(quint32 slots) const;
    [[nodiscard]] quint32 slotsInForce(int withoutRow) const;
    void chooseWritten();
    void chooseFixed();
    [[nodiscard]] std::optional<TriggerChanges> changesFor(const ExpressionProgram &expression,
                                                           const Team &team, quint32 now,
                                                           quint32 isNowKnown) const;
    [[nodiscard]] int rowToWrite(const QString &text) const;
    void tell();
    [[nodiscard]] bool isHit();

    CoreConfig &m_core;
    const QList<WantedBit> &m_wanted;
    const PortSamples &m_ports;
    const qsizetype m_sample;
    const TriggerProgram m_program;
    std::vector<Candidate> m_candidates;
    QList<qsizetype> m_possible; ///< positions of what some candidate looks for
    int m_row = -1;              ///< of the expression that triggers
    TriggerProposal m_proposal;
};

TriggerProposal Proposer::propose()
{
    findCandidates();
    leaveOut();
    if (m_possible.isEmpty()) {
        m_proposal.refusal = Text::tr("No match unit in use can look for this.");
        return m_proposal;
    }
    if (m_core.dynamic)
        chooseWritten();
    else
        chooseFixed();
    if (m_row >= 0 && !isHit())
        m_proposal.refusal = Text::tr("What was captured does not tell that the core would "
                                      "trigger there.");
    else if (m_row >= 0)
        tell();
    return m_proposal;
}

void Proposer::findCandidates()
{
    for (int slot = 0; slot < m_program.units.size(); ++slot) {
        const MatchUnit *unit = m_core.matchUnitByIndex(m_program.units[slot].unit);
        if (!comparesEqual(*unit))
            continue;
        const QStringList names = unit->trigger->flatSignalNames();
        QHash<QString, qsizetype> places;
        for (qsizetype bit = 0; bit < names.size(); ++bit)
            places.insert(names[bit], bit);
        Candidate candidate{unit, slot, QString(names.size(), u'X'), {}};
        for (qsizetype i = 0; i < m_wanted.size(); ++i) {
            const auto place = places.constFind(m_wanted[i].name);
            if (place == places.cend() ||
                (isEdge(m_wanted[i].state) && !hasEdges(unit->match_type)))
                continue;
            candidate.value[*place] = m_wanted[i].state;
            candidate.covers.append(i);
        }
        if (!candidate.covers.isEmpty())
            m_candidates.push_back(candidate);
    }
}

/// Notes what no candidate looks for.
void Proposer::leaveOut()
{
    QStringList noPort;
    QStringList noUnit;
    QStringList noEdges;
    for (qsizetype i = 0; i < m_wanted.size(); ++i) {
        const QString &name = m_wanted[i].name;
        const auto hasSignal = [&](const TriggerPort *port) {
            return port && port->flatSignalNames().contains(name);
        };
        if (std::ranges::any_of(m_candidates,
                                [&](const Candidate &c) { return c.covers.contains(i); }))
            m_possible.append(i);
        else if (std::ranges::none_of(m_core.triggers,
                                      [&](const auto &port) { return hasSignal(port.get()); }))
            noPort.append(name);
        else if (std::ranges::any_of(m_core.matchUnits, [&](const auto &unit) {
                     return unit->isInUse() && comparesEqual(*unit) && hasSignal(unit->trigger);
                 }))
            noEdges.append(name);
        else
            noUnit.append(name);
    }
    if (!noPort.isEmpty())
        m_proposal.leftOut.append(Text::tr("No trigger port has %1.").arg(joined(noPort)));
    if (!noUnit.isEmpty())
        m_proposal.leftOut.append(
            Text::tr("No match unit in use compares a port with %1.").arg(joined(noUnit)));
    if (!noEdges.isEmpty())
        m_proposal.leftOut.append(Text::tr("No match unit that sees edges compares a port with %1.")
                                      .arg(joined(noEdges)));
}

/// Candidates in \a slots that together look for all that is possible: always the one that looks
/// for the most of what is left.
std::optional<Team> Proposer::teamOf(quint32 slots) const
{
    Team team;
    QList<qsizetype> left = m_possible;
    const auto gain = [&left](const Candidate &candidate) {
        return std::ranges::count_if(
            left, [&](qsizetype position) { return candidate.covers.contains(position); });
    };
    while (!left.isEmpty()) {
        const Candidate *best = nullptr;
        for (const Candidate &candidate : m_candidates) {
            if (!((slots >> candidate.slot) & 1) || gain(candidate) == 0)
                continue;
            if (!best || gain(candidate) > gain(*best))
                best = &candidate;
        }
        if (!best)
            return std::nullopt;
        team.push_back(best);
        left.removeIf([&](qsizetype position) { return best->covers.contains(position); });
    }
    std::ranges::sort(team, {}, &Candidate::slot);
    return team;
}

/// Slots that expressions look at, but for that of one row.
quint32 Proposer::slotsInForce(int withoutRow) const
{
    quint32 slots = 0;
    for (const ExpressionProgram &expression : m_program.expressions) {
        if (expression.row != withoutRow)
            slots |= expression.slots;
    }
    return slots;
}

/// The row that says \a text already, or is not in force, or else the last.
int Proposer::rowToWrite(const QString &text) const
{
    if (const qsizetype same = m_core.expressions.indexOf(text); same >= 0)
        return int(same);
    const bool hasFlags = m_core.expressionEnabled.size() == m_core.expressions.size();
    const qsizetype off = hasFlags ? m_core.expressionEnabled.indexOf(false) : -1;
    return int(off >= 0 ? off : m_core.expressions.size() - 1);
}

void Proposer::chooseWritten()
{
    if (m_core.expressions.isEmpty()) {
        m_proposal.refusal = Text::tr("The design gives the core no expression to set.");
        return;
    }
    const int row = rowToWrite({});
    const quint32 inForce = slotsInForce(row);
    std::optional<Team> team = teamOf(~inForce);
    if (!team)
        team = teamOf(~quint32(0));
    QStringList names;
    for (const Candidate *candidate : *team) {
        m_proposal.changes.units.append(pattern(*candidate->unit, candidate->value, Report::Where));
        names.append(unitName(candidate->unit->index));
    }
    const QString text = names.join(u'&');
    m_row = rowToWrite(text);
    m_proposal.changes.expression = ExpressionChange{m_row, text, true};
}

/// The changes with which \a expression is true where all of \a team find what they look for, and
/// not where one of them does not, while the other units report \a now; nothing if there are none.
std::optional<TriggerChanges> Proposer::changesFor(const ExpressionProgram &expression,
                                                   const Team &team, quint32 now,
                                                   quint32 isNowKnown) const
{
    quint32 ofTeam = 0;
    for (const Candidate *candidate : team)
        ofTeam |= quint32(1) << candidate->slot;
    const quint32 others = expression.slots & ~ofTeam;
    const auto isDecided = [&](quint32 input) {
        if (!expression.table.at(input))
            return false;
        for (quint32 turned = ofTeam; turned != 0; turned = (turned - 1) & ofTeam) {
            if (expression.possible().at(input ^ turned))
                return false;
        }
        return true;
    };
    // A changed unit costs more than one that looks for the opposite.
    constexpr int kChange = 32;
    std::optional<quint32> best;
    int leastCost = 0;
    quint32 input = expression.slots;
    for (;; input = (input - 1) & expression.slots) {
        const quint32 changed = others & ((input ^ now) | ~isNowKnown);
        const int cost = kChange * std::popcount(changed) + std::popcount(ofTeam & ~input);
        if (isDecided(input) && (!best || cost < leastCost)) {
            best = input;
            leastCost = cost;
        }
        if (input == 0)
            break;
    }
    if (!best)
        return std::nullopt;
    const quint32 changed = others & ((*best ^ now) | ~isNowKnown);
    TriggerChanges changes;
    for (int slot = 0; slot < m_program.units.size(); ++slot) {
        const quint32 bit = quint32(1) << slot;
        const Report report = *best & bit ? Report::Where : Report::WhereNot;
        const auto member = std::ranges::find(team, slot, &Candidate::slot);
        const MatchUnit *unit = m_core.matchUnitByIndex(m_program.units[slot].unit);
        if (member != team.end())
            changes.units.append(pattern(*unit, (*member)->value, report));
        else if ((changed & bit) && !comparesEqual(*unit))
            return std::nullopt;
        else if (changed & bit) // any value, or none
            changes.units.append(
                pattern(*unit, QString(m_program.units[slot].width, u'X'), report));
    }
    return changes;
}

void Proposer::chooseFixed()
{
    const TriggerEvaluation evaluation = evaluateTrigger(m_program, m_ports);
    quint32 now = 0;
    quint32 isKnown = 0;
    for (size_t slot = 0; slot < evaluation.reports.size(); ++slot) {
        const std::optional<bool> reports = evaluation.reports[slot].at(m_sample);
        isKnown |= quint32(reports.has_value()) << slot;
        now |= quint32(reports.value_or(false)) << slot;
    }
    struct Choice
    {
        int row = -1;
        TriggerChanges changes;
        std::pair<int, qsizetype> cost; ///< units shared with other expressions, units changed
    };
    std::optional<Choice> best;
    for (const ExpressionProgram &expression : m_program.expressions) {
        const quint32 shared = slotsInForce(expression.row);
        for (const quint32 slots : {expression.slots & ~shared, expression.slots}) {
            const std::optional<Team> team = expression.isEvaluable ? teamOf(slots) : std::nullopt;
            const std::optional<TriggerChanges> changes =
                team ? changesFor(expression, *team, now, isKnown) : std::nullopt;
            if (!changes)
                continue;
            Choice choice{expression.row, *changes, {0, changes->units.size()}};
            for (const UnitChange &change : changes->units)
                choice.cost.first += int((shared >> m_program.slotOf(change.unit)) & 1);
            if (!best || choice.cost < best->cost)
                best = choice;
        }
    }
    if (!best) {
        m_proposal.refusal =
            m_program.expressions.empty()
                ? Text::tr("The design gives the core no expression.")
                : Text::tr("The expressions are fixed in the design, and none of them can be true "
                           "for this alone.");
        return;
    }
    m_row = best->row;
    m_proposal.changes = best->changes;
}

/// Evaluates the core with the changes, as whoever rehearses it will.
bool Proposer::isHit()
{
    const TriggerChanges before = applyChanges(m_proposal.changes, m_core);
    const TriggerEvaluation evaluation = evaluateTrigger(triggerProgram(m_core), m_ports);
    applyChanges(before, m_core);
    return m_sample >= 0 && m_sample < evaluation.samples &&
           evaluation.trigger.at(m_sample).value_or(false);
}

QString stepOf(const UnitChange &change, const CoreConfig &core)
{
    const MatchUnit &unit = *core.matchUnitByIndex(change.unit);
    const QString name = unitName(change.unit);
    const bool isOpen = change.value0.count(u'X') == change.value0.size();
    if (isOpen && change.func == MatchFunction::Equal)
        return Text::tr("%1 takes any value, so that it does not matter.").arg(name);
    if (isOpen)
        return Text::tr("%1 takes no value, so that it does not matter.").arg(name);
    const QString compared = Text::tr("%1, port %2: %3 %4")
                                 .arg(name, QString::number(unit.trigger->index),
                                      matchFunctionText(change.func), change.value0);
    return unit.counter_enable ? Text::tr("%1, at each match").arg(compared) : compared;
}

/// Says what the changes are and touch. Those that change nothing are left away.
void Proposer::tell()
{
    m_proposal.expression = expressionName(m_row);
    TriggerChanges &changes = m_proposal.changes;
    for (const UnitChange &change : std::as_const(changes.units)) {
        const MatchUnit &unit = *m_core.matchUnitByIndex(change.unit);
        m_proposal.steps.append(change == settingsOf(unit)
                                    ? Text::tr("%1 (as it is)").arg(stepOf(change, m_core))
                                    : stepOf(change, m_core));
        const quint32 bit = quint32(1) << m_program.slotOf(change.unit);
        QStringList others;
        for (const ExpressionProgram &expression : m_program.expressions) {
            if (expression.row != m_row && (expression.slots & bit) && change != settingsOf(unit))
                others.append(expressionName(expression.row));
        }
        if (!others.isEmpty())
            m_proposal.remarks.append(Text::tr("%1 is used in %2 too, which changes with it.")
                                          .arg(unitName(change.unit), joined(others)));
    }
    if (changes.expression) {
        const QString &before = m_core.expressions[m_row];
        const bool wasInForce =
            std::ranges::any_of(m_program.expressions, [this](const ExpressionProgram &expression) {
                return expression.row == m_row;
            });
        const QString &text = changes.expression->text;
        if (before == text)
            m_proposal.steps.append(
                wasInForce ? Text::tr("%1: %2 (as it is)").arg(expressionName(m_row), text)
                           : Text::tr("%1: %2, checked").arg(expressionName(m_row), text));
        else
            m_proposal.steps.append(Text::tr("%1: %2 in place of %3, checked")
                                        .arg(expressionName(m_row), text, before));
        if (before != text && wasInForce)
            m_proposal.remarks.append(Text::tr("%1 was checked: what it triggered at is lost.")
                                          .arg(expressionName(m_row)));
    }
    QStringList besides;
    for (const ExpressionProgram &expression : m_program.expressions) {
        if (expression.row != m_row)
            besides.append(expressionName(expression.row));
    }
    if (!besides.isEmpty())
        m_proposal.remarks.append(besides.size() == 1
                                      ? Text::tr("%1 triggers besides.").arg(besides.first())
                                      : Text::tr("%1 trigger besides.").arg(joined(besides)));
}

} // namespace

TriggerChanges applyChanges(const TriggerChanges &changes, CoreConfig &core)
{
    TriggerChanges before;
    for (const UnitChange &change : changes.units) {
        MatchUnit &unit = *core.matchUnitByIndex(change.unit);
        before.units.append(settingsOf(unit));
        unit.func = change.func;
        unit.value0 = change.value0;
        unit.value1 = change.value1;
        unit.counter = change.counter;
        unit.countinuous = change.continuous;
    }
    if (const auto &change = changes.expression) {
        core.ensureExpressionFlags();
        before.expression = ExpressionChange{change->row, core.expressions[change->row],
                                             core.expressionEnabled.value(change->row, true)};
        core.setExpression(change->text, change->row);
        if (change->row < core.expressionEnabled.size())
            core.expressionEnabled[change->row] = change->isEnabled;
    }
    return before;
}

TriggerProposal proposeTrigger(CoreConfig &core, const QList<WantedBit> &wanted,
                               const PortSamples &ports, qsizetype sample)
{
    return Proposer(core, wanted, ports, sample).propose();
}

} // namespace KEO
