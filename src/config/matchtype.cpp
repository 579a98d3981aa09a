#include "matchtype.h"

#include <QStringList>

namespace KEO {

namespace {

const QStringList kTypeTexts{QStringLiteral("Basic"),    QStringLiteral("Basic w/edges"),
                             QStringLiteral("Extended"), QStringLiteral("Extended w/edges"),
                             QStringLiteral("Range"),    QStringLiteral("Range w/edges")};

const QStringList kFunctionTexts{QStringLiteral("=="),       QStringLiteral("!="),
                                 QStringLiteral(">"),        QStringLiteral("<"),
                                 QStringLiteral(">="),       QStringLiteral("<="),
                                 QStringLiteral("in range"), QStringLiteral("not in range")};

/// The values 0 to \a count - 1 of an enumeration.
template <typename Enum>
QList<Enum> firstValues(int count)
{
    QList<Enum> values;
    for (int number = 0; number < count; ++number)
        values.append(Enum(number));
    return values;
}

} // namespace

QList<MatchType> matchTypes()
{
    return firstValues<MatchType>(int(kTypeTexts.size()));
}

bool isKnown(MatchFunction function)
{
    return function >= MatchFunction::Equal && function <= MatchFunction::NotInRange;
}

QString matchTypeText(MatchType type)
{
    return kTypeTexts.value(int(type));
}

QString matchFunctionText(MatchFunction function)
{
    return kFunctionTexts.value(int(function));
}

bool hasEdges(MatchType type)
{
    return type == MatchType::BasicWithEdges || type == MatchType::ExtendedWithEdges ||
           type == MatchType::RangeWithEdges;
}

bool isRangeFunction(MatchFunction function)
{
    return function == MatchFunction::InRange || function == MatchFunction::NotInRange;
}

bool isEqualityFunction(MatchFunction function)
{
    return function == MatchFunction::Equal || function == MatchFunction::NotEqual;
}

QList<MatchFunction> functionsForMatchType(MatchType type)
{
    static const QList<int> counts{2, 2, 6, 6, 8, 8};
    return firstValues<MatchFunction>(counts.value(int(type)));
}

} // namespace KEO
