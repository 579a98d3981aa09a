#include "triggercheck.h"

#include "triggerprogram.h"
#include "triggerreach.h"

#include <config/capturelimits.h>
#include <config/coreconfig.h>
#include <trigger/expression.h>

#include <QCoreApplication>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <bit>

namespace KEO {

namespace {

using Subject = TriggerFinding::Subject;
using Weight = TriggerFinding::Weight;

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::TriggerCheck)
};

QString unitName(int unit)
{
    return QStringLiteral("M%1").arg(unit);
}

QString expressionName(int row)
{
    return QStringLiteral("exp%1").arg(row);
}

QString joined(const QList<int> &units)
{
    QStringList names;
    for (const int unit : units)
        names.append(unitName(unit));
    if (names.size() == 1)
        return names.first();
    const QString last = names.takeLast();
    return Text::tr("%1 and %2").arg(names.join(QStringLiteral(", ")), last);
}

/// A table's answers where some inputs have a fixed state.
struct Answers
{
    bool hasTrue = false;
    bool hasFalse = false;
};

/// Over the input numbers that have the bits \a values at the places \a fixed and that \a possible
/// has.
Answers answersOf(const TruthTable &table, quint32 fixed, quint32 values,
                  const TruthTable &possible)
{
    Answers answers;
    for (size_t w = 0; w < table.words.size(); ++w) {
        quint64 looked = possible.words[w];
        for (quint32 left = fixed; left != 0; left &= left - 1) {
            const int input = std::countr_zero(left);
            const quint64 state = TruthTable::inputWord(input, w);
            looked &= (values >> input) & 1 ? state : ~state;
        }
        answers.hasTrue |= (looked & table.words[w]) != 0;
        answers.hasFalse |= (looked & ~table.words[w]) != 0;
    }
    return answers;
}

/// Goes through the parts of a set-up and notes what there is to tell.
class Checker final
{
public:
    explicit Checker(const CoreConfig &core)
        : m_core(core), m_program(triggerProgram(core)), m_reach(m_program.units)
    {
    }

    QList<TriggerFinding> run();

private:
    void add(Subject subject, int index, Weight weight, const QString &text)
    {
        m_findings.append({subject, index, weight, text});
    }
    void checkCore();
    void checkExpressions();
    void checkExpression(const ExpressionProgram &expression);
    void checkUnit(const MatchUnit &unit);
    void checkSettings(const MatchUnit &unit, const UnitProgram &program);
    void checkValue(const MatchUnit &unit, const UnitProgram &program, const QString &value);
    [[nodiscard]] QString whyAbsent(int unit) const;
    [[nodiscard]] QString because(const ExpressionProgram &expression, bool answer) const;
    [[nodiscard]] QString becauseOf(const QList<int> &never, const QList<int> &always) const;

    const CoreConfig &m_core;
    const TriggerProgram m_program;
    const TriggerReach m_reach;
    QList<TriggerFinding> m_findings;
};

QList<TriggerFinding> Checker::run()
{
    checkCore();
    if (m_program.tables != TriggerProgram::Tables::AnyInput)
        checkExpressions();
    for (const auto &unit : m_core.matchUnits) {
        if (unit->enabled)
            checkUnit(*unit);
    }
    std::ranges::stable_sort(m_findings, [](const TriggerFinding &a, const TriggerFinding &b) {
        return a.weight == Weight::Obstacle && b.weight != Weight::Obstacle;
    });
    return m_findings;
}

void Checker::checkCore()
{
    const std::optional<Error> obstacle = captureObstacle(m_core);
    const bool isOfUnit = obstacle && std::ranges::any_of(m_core.matchUnits, [&](const auto &unit) {
                              const std::optional<Error> own = counterObstacle(*unit);
                              return own && own->message == obstacle->message;
                          });
    if (obstacle && !isOfUnit)
        add(Subject::Core, 0, Weight::Obstacle, obstacle->message);
    else if (!offeredAmounts(m_core.storage_depth, m_core.window_num)
                  .contains(m_core.capture_amount))
        add(Subject::Amount, 0, Weight::Obstacle,
            Text::tr("%1 samples is no amount that the page offers: until one is chosen there, its "
                     "Start captures nothing.")
                .arg(m_core.capture_amount));

    if (m_program.tables == TriggerProgram::Tables::AnyInput)
        add(Subject::Core, 0, Weight::Note,
            m_core.expressions.isEmpty()
                ? Text::tr("There is no expression, so any sample triggers.")
                : Text::tr("No expression is checked, so any sample triggers."));
}

void Checker::checkExpressions()
{
    TruthTable any = TruthTable::constant(int(m_program.units.size()), false);
    bool isOneAlways = false;
    for (const ExpressionProgram &expression : m_program.expressions) {
        checkExpression(expression);
        isOneAlways |= !answersOf(expression.table, 0, 0, m_reach.inputs()).hasFalse;
        for (size_t w = 0; w < any.words.size(); ++w)
            any.words[w] |= expression.table.words[w];
    }
    if (m_program.expressions.size() > 1 && !isOneAlways &&
        !answersOf(any, 0, 0, m_reach.inputs()).hasFalse)
        add(Subject::Core, 0, Weight::Note,
            Text::tr("One of the checked expressions is true at any time, so the first sample "
                     "triggers."));
    if (m_program.leftOut > 0)
        add(Subject::Core, 0, Weight::Note,
            Text::tr("The core has no room for the last %1 of the expressions.")
                .arg(m_program.leftOut));
}

/// The numbers behind an M, in ascending order.
QList<int> unitsNamed(const QString &text)
{
    static const QRegularExpression name(QStringLiteral("M([0-9]{1,4})"));
    QSet<int> units;
    for (auto match = name.globalMatch(text); match.hasNext();)
        units.insert(match.next().captured(1).toInt());
    QList<int> sorted(units.begin(), units.end());
    std::ranges::sort(sorted);
    return sorted;
}

/// Why the text is none that the expression dialog takes; empty if it is one.
QString grammarFault(const QString &text)
{
    static const QRegularExpression token(QStringLiteral("M[0-9]+|."));
    QStringList tokens;
    for (auto match = token.globalMatch(text); match.hasNext();)
        tokens.append(match.next().captured());
    return expressionFault(tokens, {});
}

QString Checker::whyAbsent(int number) const
{
    const MatchUnit *unit = m_core.matchUnitByIndex(number);
    if (!unit)
        return Text::tr("%1, which no core has").arg(unitName(number));
    return unit->enabled ? Text::tr("%1, which has no trigger port").arg(unitName(number))
                         : Text::tr("%1, which is off").arg(unitName(number));
}

QString Checker::becauseOf(const QList<int> &never, const QList<int> &always) const
{
    QStringList reasons;
    if (!never.isEmpty())
        reasons.append(Text::tr("%1 can never match").arg(joined(never)));
    if (!always.isEmpty())
        reasons.append(never.isEmpty() && always.size() == 1
                           ? Text::tr("%1 always matches").arg(joined(always))
                           : Text::tr("%1 always match").arg(joined(always)));
    return Text::tr(", because %1").arg(reasons.join(Text::tr(" and ")));
}

/// Why \a expression has the one answer \a answer for all inputs that there can be.
QString Checker::because(const ExpressionProgram &expression, bool answer) const
{
    const TruthTable all = TruthTable::constant(int(m_program.units.size()), true);
    const auto explains = [&](quint32 fixed, quint32 values) {
        const Answers answers = answersOf(expression.table, fixed, values, all);
        return answer ? !answers.hasFalse : !answers.hasTrue;
    };
    if (explains(0, 0))
        return Text::tr(", whatever its units do");
    quint32 fixed = 0;
    quint32 values = 0;
    QList<int> never;
    QList<int> always;
    for (int slot = 0; slot < m_program.units.size(); ++slot) {
        const UnitRange range = m_reach.rangeOf(slot);
        const quint32 bit = quint32(1) << slot;
        if (!(expression.slots & bit) || range == UnitRange::Either)
            continue;
        // A counter keeps a unit that always matches from reporting at first.
        if (range == UnitRange::Always && m_program.units[slot].count.value_or(1) > 1)
            continue;
        const int unit = m_program.units[slot].unit;
        const quint32 value = range == UnitRange::Always ? bit : 0;
        if (explains(bit, value))
            return range == UnitRange::Always ? becauseOf({}, {unit}) : becauseOf({unit}, {});
        (range == UnitRange::Always ? always : never).append(unit);
        fixed |= bit;
        values |= value;
    }
    if (fixed != 0 && explains(fixed, values))
        return becauseOf(never, always);
    return Text::tr(", because its units compare the same port");
}

void Checker::checkExpression(const ExpressionProgram &expression)
{
    const int row = expression.row;
    const QString name = expressionName(row);
    if (!expression.isEvaluable) {
        if (m_program.tables == TriggerProgram::Tables::Fixed)
            add(Subject::Expression, row, Weight::Note,
                Text::tr("%1 can't be read, so it is not checked.").arg(name));
        else
            add(Subject::Expression, row, Weight::Obstacle,
                Text::tr("%1 can't be read, so it never triggers.").arg(name));
        return;
    }
    QStringList absent;
    for (const int unit : unitsNamed(expression.text)) {
        if (m_program.slotOf(unit) < 0)
            absent.append(whyAbsent(unit));
    }
    const QString named = absent.join(Text::tr(", and "));
    Answers answers = answersOf(expression.table, 0, 0, m_reach.inputs());
    if (expression.possibleTable)
        answers.hasTrue = answersOf(*expression.possibleTable, 0, 0, m_reach.inputs()).hasTrue;
    if (!answers.hasTrue)
        add(Subject::Expression, row, Weight::Obstacle,
            absent.isEmpty()
                ? Text::tr("%1 can never be true%2.").arg(name, because(expression, false))
                : Text::tr("%1 can never be true: it names %2.").arg(name, named));
    else if (!answers.hasFalse)
        add(Subject::Expression, row, Weight::Note,
            absent.isEmpty()
                ? Text::tr("%1 is true at once%2.").arg(name, because(expression, true))
                : Text::tr("%1 is true at once: it names %2.").arg(name, named));
    else if (expression.possibleTable)
        add(Subject::Expression, row, Weight::Note,
            Text::tr("When %1 triggers can't be told for sure: it names %2.").arg(name, named));
    else if (!absent.isEmpty() && m_program.tables != TriggerProgram::Tables::Fixed)
        add(Subject::Expression, row, Weight::Note,
            Text::tr("%1 triggers otherwise than it reads: it names %2.").arg(name, named));
    const QString fault = absent.isEmpty() ? grammarFault(expression.text) : QString();
    if (!fault.isEmpty())
        add(Subject::Expression, row, Weight::Note,
            Text::tr("%1 may trigger otherwise than it reads. %2").arg(name, fault));
}

void Checker::checkUnit(const MatchUnit &unit)
{
    if (const std::optional<Error> obstacle = counterObstacle(unit))
        add(Subject::Unit, unit.index, Weight::Obstacle, obstacle->message);
    const QString name = unitName(unit.index);
    const int slot = m_program.slotOf(unit.index);
    if (slot < 0) {
        add(Subject::Unit, unit.index, Weight::Note,
            Text::tr("%1 is on but has no trigger port.").arg(name));
        return;
    }
    if (m_program.tables == TriggerProgram::Tables::AnyInput)
        return;
    const bool isUsed =
        std::ranges::any_of(m_program.expressions, [slot](const ExpressionProgram &expression) {
            return (expression.slots >> slot) & 1;
        });
    if (!isUsed) {
        add(Subject::Unit, unit.index, Weight::Note,
            m_core.dynamic ? Text::tr("No checked expression uses %1.").arg(name)
                           : Text::tr("No expression uses %1.").arg(name));
        return;
    }
    checkSettings(unit, m_program.units[slot]);
}

QString whyNever(const UnitProgram &unit)
{
    if (!canRepeat(unit))
        return Text::tr("an edge is never at two samples in a row");
    switch (unit.function) {
    case MatchFunction::NotEqual:
        return Text::tr("every bit of its value is X");
    case MatchFunction::Greater:
        return Text::tr("no value is greater");
    case MatchFunction::Less:
        return Text::tr("no value is less");
    case MatchFunction::InRange:
        return Text::tr("the minimum is above the maximum");
    case MatchFunction::NotInRange:
        return Text::tr("every value is in the range");
    default:
        return Text::tr("no value fits");
    }
}

QString whyAlways(const UnitProgram &unit)
{
    switch (unit.function) {
    case MatchFunction::Equal:
        return Text::tr("every bit of its value is X");
    case MatchFunction::InRange:
        return Text::tr("every value is in the range");
    case MatchFunction::NotInRange:
        return Text::tr("the minimum is above the maximum");
    default:
        return Text::tr("every value fits");
    }
}

void Checker::checkSettings(const MatchUnit &unit, const UnitProgram &program)
{
    const QString name = unitName(unit.index);
    switch (m_reach.rangeOf(m_program.slotOf(unit.index))) {
    case UnitRange::Never:
        add(Subject::Unit, unit.index, Weight::Obstacle,
            Text::tr("%1 can never match: %2.").arg(name, whyNever(program)));
        break;
    case UnitRange::Always:
        add(Subject::Unit, unit.index, Weight::Note,
            Text::tr("%1 always matches: %2.").arg(name, whyAlways(program)));
        break;
    case UnitRange::Either:
        break;
    }
    if (!isKnown(unit.func))
        add(Subject::Unit, unit.index, Weight::Note,
            Text::tr("%1 has an unknown function; the core takes it as ==.").arg(name));
    else if (const QList<MatchFunction> offered = functionsForMatchType(unit.match_type);
             !offered.isEmpty() && !offered.contains(unit.func))
        add(Subject::Unit, unit.index, Weight::Note,
            Text::tr("%1 is of the type %2, which has no %3.")
                .arg(name, matchTypeText(unit.match_type), matchFunctionText(unit.func)));
    else if (!hasEdges(unit.match_type) && program.words.edgeWord.count(true) > 0)
        add(Subject::Unit, unit.index, Weight::Note,
            Text::tr("%1 is of the type %2, which sees no edges.")
                .arg(name, matchTypeText(unit.match_type)));
    checkValue(unit, program, unit.value0);
    if (isRangeFunction(program.function))
        checkValue(unit, program, unit.value1);
}

/// Values of a description are taken as they stand.
void Checker::checkValue(const MatchUnit &unit, const UnitProgram &program, const QString &value)
{
    const QString name = unitName(unit.index);
    if (value.size() > program.width)
        add(Subject::Unit, unit.index, Weight::Note,
            Text::tr("%1 has a value of %2 digits; the first %3 count.")
                .arg(name, QString::number(value.size()), QString::number(program.width)));
    else if (value.size() < program.width)
        add(Subject::Unit, unit.index, Weight::Note,
            Text::tr("%1 has a value of %2 digits for %3 bits; zeros are put in front.")
                .arg(name, QString::number(value.size()), QString::number(program.width)));
    const bool isPattern = isEqualityFunction(program.function);
    const QStringView digits = isPattern ? u"01XRFBN" : u"01";
    QString others;
    for (const QChar c :
         QStringView(value).first(std::min<qsizetype>(value.size(), program.width))) {
        if (!digits.contains(c) && !others.contains(c))
            others.append(c);
    }
    if (!others.isEmpty())
        add(Subject::Unit, unit.index, Weight::Note,
            (isPattern ? Text::tr("%1 has a value with “%2”, which counts as X.")
                       : Text::tr("%1 has a value with “%2”, which counts as 0."))
                .arg(name, others.left(16)));
}

} // namespace

QList<TriggerFinding> checkTrigger(const CoreConfig &core)
{
    return Checker(core).run();
}

} // namespace KEO
