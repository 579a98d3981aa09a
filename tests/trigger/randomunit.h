#pragma once

#include <config/coreconfig.h>

#include <QRandomGenerator>

#include <utility>

inline QString randomText(QRandomGenerator &random, const QString &characters, int length)
{
    QString text;
    for (int i = 0; i < length; ++i)
        text += characters[random.bounded(int(characters.size()))];
    return text;
}

/// Gives a unit with a port any setting that a user can give it.
inline void setRandomly(KEO::MatchUnit &unit, QRandomGenerator &random)
{
    const int bits = int(KEO::signalBits(unit.trigger->signals));
    const QList<KEO::MatchFunction> functions = functionsForMatchType(unit.match_type);
    unit.func = functions[random.bounded(int(functions.size()))];
    const QString letters = hasEdges(unit.match_type) ? "01XRFBN" : "01X";
    const QString characters = isEqualityFunction(unit.func) ? letters : "01";
    unit.value0 = randomText(random, characters, bits);
    unit.value1 = randomText(random, "01", bits);
    if (isRangeFunction(unit.func) && unit.value0 > unit.value1)
        std::swap(unit.value0, unit.value1);
    unit.counter = random.bounded(1 << unit.counter_width) + 1;
    unit.countinuous = random.bounded(2);
}
