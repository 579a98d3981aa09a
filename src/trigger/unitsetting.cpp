#include "unitsetting.h"

#include "matchvalue.h"

#include <config/capturelimits.h>
#include <config/coreconfig.h>

#include <QCoreApplication>
#include <QRegularExpression>

#include <algorithm>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::UnitSetting)
};

/// The new contents of a unit; what is empty stays.
struct UnitChange
{
    struct Comparison
    {
        MatchFunction function;
        QString value0;
        QString value1; ///< of a range
    };
    std::optional<Comparison> comparison;
    std::optional<int> count;
    bool continuous = false;
};

Error refusal(const MatchUnit &unit, const QString &why)
{
    return {Error::Usage,
            Text::tr("M%1 of core %2: %3")
                .arg(QString::number(unit.index), QString::number(unit.core->index), why)};
}

int portWidth(const MatchUnit &unit)
{
    return int(signalBits(unit.trigger->signals));
}

/// Counts that the unit's counter reaches. A description may hold any width.
int greatestCount(const MatchUnit &unit)
{
    return 1 << std::clamp(unit.counter_width, 0, kMaxCounterBits);
}

/// As it stands before its values; the word of a range has a blank behind it.
QString symbolOf(MatchFunction function)
{
    switch (function) {
    case MatchFunction::InRange:
        return QStringLiteral("in ");
    case MatchFunction::NotInRange:
        return QStringLiteral("not in ");
    default:
        return matchFunctionText(function);
    }
}

struct TypedValue
{
    int base = 2;
    QString digits;
};

TypedValue typedValue(const QString &text)
{
    for (const auto &[prefix, base] :
         {std::pair(u"0x", 16), std::pair(u"0o", 8), std::pair(u"0d", 10)}) {
        if (text.startsWith(prefix))
            return {base, text.mid(2).toUpper()};
    }
    return {2, text.toUpper()};
}

/// What a value of that radix is made of: "a hexadecimal value (0-9 A-F)".
QString kindOfValue(int base, MatchFunction function, MatchType type)
{
    switch (base) {
    case 16:
        return Text::tr("a hexadecimal value (0-9 A-F)");
    case 10:
        return Text::tr("a decimal value (0-9)");
    case 8:
        return Text::tr("an octal value (0-7)");
    default:
        break;
    }
    QString characters = QStringLiteral("0 1");
    if (isEqualityFunction(function))
        characters += hasEdges(type) ? QStringLiteral(" X R F B N") : QStringLiteral(" X");
    return Text::tr("a binary value (%1) or one with 0x, 0o or 0d").arg(characters);
}

bool takes(const MatchUnit &unit, MatchFunction function, int base, const QString &digits)
{
    const QRegularExpression pattern(
        QRegularExpression::anchoredPattern(valuePattern(base, function, unit.match_type)));
    return !digits.isEmpty() && pattern.match(digits).hasMatch();
}

/// A value as the unit stores it.
Result<QString> storedValue(const MatchUnit &unit, MatchFunction function, const QString &text)
{
    const auto [base, digits] = typedValue(text);
    const int bits = portWidth(unit);
    if (!takes(unit, function, base, digits))
        return refusal(unit, Text::tr("%1 takes %2, not \"%3\".")
                                 .arg(symbolOf(function).trimmed(),
                                      kindOfValue(base, function, unit.match_type), text));
    bool fits64 = true;
    if (base != 2)
        digits.toULongLong(&fits64, base);
    if (!fits64)
        return refusal(unit, Text::tr("\"%1\" is beyond 64 bits; write it in binary.").arg(text));
    const auto isLetter = [](QChar c) { return c.isLetter(); };
    if (base == 2 && digits.size() < bits && std::ranges::any_of(digits, isLetter))
        return refusal(unit, Text::tr("\"%1\" has letters, so it needs one character for each of "
                                      "the %2 signals of the port.")
                                 .arg(text, QString::number(bits)));
    const BinaryValues values = binaryValues(digits, QString(), base, bits, MatchFunction::Equal);
    if (values.problem == ValueProblem::TooWide)
        return refusal(unit, Text::tr("value is more than effective width. \"%1\" needs more than "
                                      "%2 bits.")
                                 .arg(text, QString::number(bits)));
    return values.value0;
}

bool isOffered(const MatchUnit &unit, MatchFunction function)
{
    return functionsForMatchType(unit.match_type).contains(function);
}

Error notOffered(const MatchUnit &unit, MatchFunction function)
{
    if (matchTypeText(unit.match_type).isEmpty())
        return refusal(unit, Text::tr("its match type %1 is not known.").arg(int(unit.match_type)));
    QStringList offered;
    for (const MatchFunction other : functionsForMatchType(unit.match_type))
        offered.append(symbolOf(other).trimmed());
    return refusal(
        unit, Text::tr("its match type, %1, has no %2, only %3.")
                  .arg(matchTypeText(unit.match_type), symbolOf(function).trimmed(),
                       offered.isEmpty() ? Text::tr("none") : offered.join(QStringLiteral(", "))));
}

Result<UnitChange::Comparison> readRange(const MatchUnit &unit, MatchFunction function,
                                         const QString &low, const QString &high)
{
    const Result<QString> minimum = storedValue(unit, function, low);
    if (!minimum)
        return minimum.error();
    const Result<QString> maximum = storedValue(unit, function, high);
    if (!maximum)
        return maximum.error();
    if (*minimum > *maximum) // of equal length: text order is that of the numbers
        return refusal(unit, Text::tr("Maximum value is less than minimum value."));
    return UnitChange::Comparison{function, *minimum, *maximum};
}

/// The comparison that \a text is; nothing if it is none.
Result<std::optional<UnitChange::Comparison>> readComparison(const MatchUnit &unit,
                                                             const QString &text)
{
    using Read = std::optional<UnitChange::Comparison>;
    static const QRegularExpression single(QStringLiteral("^(==|!=|>=|<=|>|<)\\s*(\\w*)$"));
    static const QRegularExpression range(
        QStringLiteral("^(not\\s+in|in)\\s+(\\w+)\\s*\\.\\.\\s*(\\w+)$"));
    const auto inRange = range.match(text);
    if (inRange.hasMatch()) {
        const MatchFunction function =
            inRange.captured(1) == u"in" ? MatchFunction::InRange : MatchFunction::NotInRange;
        if (!isOffered(unit, function))
            return notOffered(unit, function);
        const auto read = readRange(unit, function, inRange.captured(2), inRange.captured(3));
        return read ? Result<Read>(*read) : read.error();
    }
    const auto compared = single.match(text);
    if (!compared.hasMatch())
        return Read();
    MatchFunction function = MatchFunction::Equal;
    while (matchFunctionText(function) != compared.captured(1))
        function = MatchFunction(int(function) + 1);
    if (!isOffered(unit, function))
        return notOffered(unit, function);
    const Result<QString> value = storedValue(unit, function, compared.captured(2));
    if (!value)
        return value.error();
    return Read({function, *value, {}});
}

Result<int> readCount(const MatchUnit &unit, const QString &text)
{
    bool ok = false;
    const int count = text.toInt(&ok);
    if (!ok || count < 1 || count > greatestCount(unit))
        return refusal(unit, Text::tr("count takes 1 to %1, not \"%2\".")
                                 .arg(QString::number(greatestCount(unit)), text));
    return count;
}

/// Adds what one part says.
std::optional<Error> readPart(const MatchUnit &unit, const QString &part, UnitChange &change)
{
    static const QRegularExpression countPart(QStringLiteral("^count\\s*=\\s*(.*)$"));
    const auto count = countPart.match(part);
    const bool isContinuous = part == u"continuous";
    if (!count.hasMatch() && !isContinuous) {
        const auto comparison = readComparison(unit, part);
        if (!comparison)
            return comparison.error();
        if (!*comparison)
            return refusal(unit, Text::tr("\"%1\" is no comparison such as ==RX01, >0x1F or in "
                                          "0d10..0d20, no count=N and not \"continuous\".")
                                     .arg(part));
        if (change.comparison)
            return refusal(unit,
                           Text::tr("it has one comparison, and \"%1\" is a second.").arg(part));
        change.comparison = *comparison;
        return {};
    }
    if (!unit.counter_enable)
        return refusal(unit, Text::tr("the design gives it no counter for \"%1\".").arg(part));
    if (isContinuous) {
        change.continuous = true;
        return {};
    }
    const Result<int> matches = readCount(unit, count.captured(1));
    if (!matches)
        return matches.error();
    change.count = *matches;
    return {};
}

Result<MatchUnit *> unitToSet(const CoreConfig &core, const QString &number)
{
    MatchUnit *unit = core.matchUnitByIndex(number.toInt());
    if (!unit || !unit->enabled)
        return Error{
            Error::Usage,
            Text::tr("Core %1 has no match unit M%2.").arg(QString::number(core.index), number)};
    if (!unit->isInUse())
        return refusal(*unit, Text::tr("the design connects it to no port."));
    return unit;
}

void apply(const UnitChange &change, MatchUnit &unit)
{
    if (change.comparison) {
        unit.func = change.comparison->function;
        unit.value0 = change.comparison->value0;
        if (isRangeFunction(unit.func))
            unit.value1 = change.comparison->value1;
    }
    if (change.count) {
        unit.counter = *change.count;
        unit.countinuous = change.continuous;
    } else if (change.continuous) {
        unit.countinuous = true;
    }
}

} // namespace

std::optional<Error> applyUnitSetting(const QString &text, CoreConfig &core)
{
    static const QRegularExpression pattern(QStringLiteral("^\\s*[Mm]([0-9]{1,2})\\s*=(.*)$"));
    const auto match = pattern.match(text);
    if (!match.hasMatch())
        return Error{
            Error::Usage,
            Text::tr("\"%1\" is no match unit with its setting, such as M0='==RX01'.").arg(text)};
    const Result<MatchUnit *> unit = unitToSet(core, match.captured(1));
    if (!unit)
        return unit.error();
    UnitChange change;
    for (const QString &part : match.captured(2).split(u',')) {
        if (const auto error = readPart(**unit, part.trimmed(), change))
            return error;
    }
    apply(change, **unit);
    return {};
}

std::optional<QString> unitSettingText(const MatchUnit &unit)
{
    if (!unit.isInUse() || !isOffered(unit, unit.func))
        return {};
    const int bits = portWidth(unit);
    // A shorter value means its number: that is how the core gets it. An empty one is all zeros.
    const auto whole = [bits](const QString &value) { return value.rightJustified(bits, u'0'); };
    const auto isWritable = [&](const QString &value) {
        return value.size() == bits && takes(unit, unit.func, 2, value);
    };
    const QString value0 = whole(unit.value0);
    const QString value1 = whole(unit.value1);
    const bool isRange = isRangeFunction(unit.func);
    if (!isWritable(value0) || (isRange && (!isWritable(value1) || value0 > value1)))
        return {};
    QString text = QStringLiteral("M%1=").arg(unit.index) + symbolOf(unit.func) + value0;
    if (isRange)
        text += QStringLiteral("..") + value1;
    if (!unit.counter_enable)
        return text;
    if (unit.counter < 1 || unit.counter > greatestCount(unit))
        return {};
    text += QStringLiteral(",count=%1").arg(unit.counter);
    return unit.countinuous ? text + QStringLiteral(",continuous") : text;
}

} // namespace KEO
