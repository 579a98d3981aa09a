#include "registerimage.h"

#include "bits.h"
#include "devicemodels.h"
#include "shiftword.h"

#include <base/logging.h>
#include <trigger/truthtable.h>

#include <algorithm>
#include <array>

namespace KEO {

namespace {

constexpr qint64 kExpressionCount = 0x0020;
constexpr qint64 kCaptureAmount = 0x0021;
constexpr qint64 kTriggerOffset = 0x0022;
constexpr qint64 kWindowCount = 0x0023;
constexpr qint64 kUnitBase = 0x0100;
constexpr qint64 kTableBase = 0xAB00;
constexpr qint64 kBlock = 16; // addresses that a unit or an expression takes

constexpr qint64 kMaxImageBytes = qint64(512) * 1024 * 1024;
constexpr qint64 kBytesPerWord = 64; // of a bit array in a list, apart from its bits

/// Register writes of one core: all data right-aligned in its register width.
class RegisterWriter final
{
public:
    explicit RegisterWriter(int width) : m_width(width) {}

    QBitArray write(qint64 address, const QBitArray &data) const
    {
        return writeRegisterWord(address, alignBits(data, m_width));
    }
    /// Numbers are worked out in 64 bits and cut here, so that no file makes them overflow.
    QBitArray write(qint64 address, qint64 value) const
    {
        return write(address, bitsOfInt32(qint32(value)));
    }

private:
    int m_width;
};

qint64 expressionCount(const CoreConfig &core)
{
    return core.dynamic ? std::max<qint64>(core.expressionEnabled.count(true), 1)
                        : core.expressions.size();
}

/// Rows that the core still writes when it has seen the trigger.
qint64 triggerOffset(const CoreConfig &core, const QString &deviceName, bool isZeo)
{
    const qint64 offset = qint64(core.capture_amount) - core.trigger_pos - (core.dynamic ? 4 : 3);
    return !isZeo && writesOneRowLate(deviceName) ? offset - 1 : offset;
}

void appendUnit(QList<QBitArray> &image, const MatchUnit &unit, const RegisterWriter &writer)
{
    const qint64 base = kUnitBase + kBlock * unit.index;
    const MatchUnitWords words = encodeMatchUnitValue(unit);
    image.append(writer.write(base, words.compareWord));
    image.append(writer.write(base + 1, words.maskWord));
    image.append(writer.write(base + 2, words.edgeWord));
    image.append(writer.write(base + 3, encodeMatchUnitControl(unit)));
    if (unit.counter_enable)
        image.append(writer.write(base + 4, bitsOfInt16(qint32(qint64(unit.counter) - 1))));
}

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

/// For each unit its slot, which is its bit in a table's input number, or -1.
struct SlotTable
{
    QList<int> slotOfUnit;
    int inUse = 0;
};

SlotTable slotsOf(const CoreConfig &core)
{
    SlotTable table;
    for (const auto &unit : core.matchUnits)
        table.slotOfUnit.append(unit->isInUse() ? table.inUse++ : -1);
    return table;
}

QStringList expressionsInForce(const CoreConfig &core)
{
    if (core.expressions.size() != core.expressionEnabled.size())
        return core.expressions;
    QStringList inForce;
    for (qsizetype i = 0; i < core.expressions.size(); ++i) {
        if (core.expressionEnabled[i])
            inForce.append(core.expressions[i]);
    }
    return inForce;
}

/// The input bits that the units named in \a text feed. A unit without a slot has none.
QBitArray inputMask(QString text, const SlotTable &slotTable)
{
    QBitArray mask(CoreConfig::kUnits);
    for (qsizetype unit = slotTable.slotOfUnit.size(); unit >= 0; --unit) {
        const QString name = QLatin1Char('M') + QString::number(unit);
        if (!text.contains(name))
            continue;
        const int slot = slotTable.slotOfUnit.value(unit, -1);
        if (slot >= 0)
            mask.setBit(slot);
        text.remove(name);
    }
    return mask;
}

/// Write words that differ only in their low 16 bits of data, made from one pattern: an image has
/// tens of thousands of them.
class NumberWriter final
{
public:
    NumberWriter(qint64 address, const RegisterWriter &writer)
        : m_pattern(writer.write(address, QBitArray()))
    {
    }

    QBitArray write(quint32 number) const
    {
        QBitArray word = m_pattern;
        for (qsizetype last = word.size() - 1; number != 0; number >>= 1, --last) {
            if (number & 1)
                word.setBit(last);
        }
        return word;
    }

private:
    QBitArray m_pattern;
};

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
    const MatchFunction function = isKnown(unit.func) ? unit.func : MatchFunction::Equal;
    QBitArray control = alignBits(bitsOfInt16(int(function)), 4);
    control.setBit(0, unit.counter_enable && unit.countinuous);
    return control;
}

QList<QBitArray> buildRegisterImage(const CoreConfig &core, const QString &deviceName, bool isZeo)
{
    const RegisterWriter writer(core.requiredRegisterWidth());
    QList<QBitArray> image = {coreSelectWord(core.index),
                              writer.write(kExpressionCount, expressionCount(core) - 1),
                              writer.write(kCaptureAmount, qint64(core.capture_amount) - 1),
                              writer.write(kTriggerOffset, triggerOffset(core, deviceName, isZeo)),
                              writer.write(kWindowCount, qint64(core.window_num) - 1)};
    for (const auto &unit : core.matchUnits) {
        if (unit->isInUse())
            appendUnit(image, *unit, writer);
    }
    return image;
}

QList<QBitArray> buildExpressionImage(const CoreConfig &core)
{
    if (!core.dynamic)
        return {};
    const int width = core.requiredRegisterWidth();
    const RegisterWriter writer(width);
    const SlotTable slotTable = slotsOf(core);
    const quint32 inputs = quint32(1) << slotTable.inUse;
    const QStringList inForce = expressionsInForce(core);
    if (inForce.isEmpty() && core.expressions.size() != core.expressionEnabled.size())
        return {};

    const qint64 tableBytes = qint64(inputs) * (kBytesPerWord + width / 8);
    const qint64 addressable = (0x10000 - kTableBase) / kBlock;
    const qint64 affordable = kMaxImageBytes / tableBytes;
    const qint64 tables = std::min({std::max<qint64>(inForce.size(), 1), addressable, affordable});
    if (tables < inForce.size())
        qCDebug(lcCapture, "core %d: %lld of %lld expressions left out", core.index,
                qlonglong(inForce.size() - tables), qlonglong(inForce.size()));

    QList<QBitArray> image;
    image.reserve(tables * inputs);
    for (qint64 e = 0; e < tables; ++e) {
        const NumberWriter clear(kTableBase + kBlock * e, writer);
        const NumberWriter set(kTableBase + kBlock * e + 1, writer);
        if (inForce.isEmpty()) {
            for (quint32 i = 0; i < inputs; ++i)
                image.append(set.write(i));
            continue;
        }
        const QString table = expressionTruthTable(inForce[e]);
        const QBitArray mask = inputMask(inForce[e], slotTable);
        for (quint32 i = 0; i < inputs; ++i) {
            const qsizetype p = packMaskedBits(i, mask);
            const bool fires = p < table.size() && table[p] == u'1';
            image.append((fires ? set : clear).write(i));
        }
    }
    return image;
}

} // namespace KEO
