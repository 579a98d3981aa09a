#include "matchunitwords.h"

#include "bits.h"
#include "registermap.h"

#include <config/coreconfig.h>

#include <algorithm>
#include <array>

namespace KEO {

namespace {

void setOnes(QBitArray &bits, const QString &value)
{
    for (qsizetype i = 0; i < bits.size(); ++i) {
        if (value[i] == u'1')
            bits.setBit(i);
    }
}

void setPatternBits(MatchUnitWords &words, qsizetype i, QChar c)
{
    struct Code
    {
        char16_t character;
        bool compare;
        bool mask;
        bool edge;
    };
    static constexpr std::array kCodes = {
        Code{u'0', false, true, false},  Code{u'1', true, true, false},
        Code{u'X', false, false, false}, Code{u'R', false, false, true},
        Code{u'F', true, false, true},   Code{u'B', false, true, true},
        Code{u'N', true, true, true}};
    const auto code = std::ranges::find(kCodes, c.unicode(), &Code::character);
    if (code == kCodes.end())
        return;
    words.compareWord.setBit(i, code->compare);
    words.maskWord.setBit(i, code->mask);
    words.edgeWord.setBit(i, code->edge);
}

} // namespace

MatchUnitWords encodeMatchUnitValue(const MatchUnit &unit)
{
    const qsizetype width = unit.trigger ? signalBits(unit.trigger->signals) : 0;
    const QString first = unit.value0.rightJustified(width, u'0', true);
    const QString second = unit.value1.rightJustified(width, u'0', true);
    MatchUnitWords words{QBitArray(width), QBitArray(width), QBitArray(width)};
    switch (unit.func) {
    case MatchFunction::Equal:
    case MatchFunction::NotEqual:
        for (qsizetype i = 0; i < width; ++i)
            setPatternBits(words, i, first[i]);
        break;
    case MatchFunction::Greater:
    case MatchFunction::GreaterOrEqual:
        setOnes(words.compareWord, first);
        break;
    case MatchFunction::Less: // upper bounds stand in the mask, where a range keeps its maximum
    case MatchFunction::LessOrEqual:
        setOnes(words.maskWord, first);
        break;
    default:
        setOnes(words.compareWord, first);
        setOnes(words.maskWord, second);
        break;
    }
    return words;
}

QBitArray encodeMatchUnitControl(const MatchUnit &unit)
{
    return controlWord(isKnown(unit.func) ? unit.func : MatchFunction::Equal,
                       unit.counter_enable && unit.countinuous ? Counting::Continuous
                                                               : Counting::Total);
}

QBitArray controlWord(MatchFunction function, Counting counting)
{
    QBitArray control = alignBits(bitsOfInt16(int(function)), Registers::kControlBits);
    control.setBit(0, counting == Counting::Continuous);
    return control;
}

} // namespace KEO
