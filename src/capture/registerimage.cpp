#include "registerimage.h"

#include "bits.h"
#include "devicemodels.h"
#include "registermap.h"
#include "shiftword.h"
#include "triggerprogram.h"

#include <trigger/truthtable.h>

#include <algorithm>

namespace KEO {

namespace {

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

void appendUnit(QList<QBitArray> &image, const UnitProgram &unit, const RegisterWriter &writer)
{
    const qint64 base = Registers::kUnitBase + Registers::kBlock * unit.unit;
    image.append(writer.write(base + Registers::Compare, unit.words.compareWord));
    image.append(writer.write(base + Registers::Mask, unit.words.maskWord));
    image.append(writer.write(base + Registers::Edge, unit.words.edgeWord));
    image.append(
        writer.write(base + Registers::Control, controlWord(unit.function, unit.counting)));
    if (unit.count)
        image.append(writer.write(base + Registers::Counter, bitsOfInt16(*unit.count - 1)));
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

void appendTable(QList<QBitArray> &image, qint64 position, const TruthTable &table,
                 const RegisterWriter &writer)
{
    const qint64 base = Registers::kTableBase + Registers::kBlock * position;
    const NumberWriter clear(base + Registers::ClearEntry, writer);
    const NumberWriter set(base + Registers::SetEntry, writer);
    for (quint32 i = 0; i < table.size(); ++i)
        image.append((table.at(i) ? set : clear).write(i));
}

} // namespace

QList<QBitArray> buildRegisterImage(const CoreConfig &core, const QString &deviceName, bool isZeo)
{
    const RegisterWriter writer(core.requiredRegisterWidth());
    QList<QBitArray> image = {
        coreSelectWord(core.index),
        writer.write(Registers::kExpressionCount, expressionCount(core) - 1),
        writer.write(Registers::kCaptureAmount, qint64(core.capture_amount) - 1),
        writer.write(Registers::kTriggerOffset, triggerOffset(core, deviceName, isZeo)),
        writer.write(Registers::kWindowCount, qint64(core.window_num) - 1)};
    for (const UnitProgram &unit : programUnits(core))
        appendUnit(image, unit, writer);
    return image;
}

QList<QBitArray> buildExpressionImage(const CoreConfig &core)
{
    if (!core.dynamic)
        return {};
    const TriggerProgram program = triggerProgram(core);
    const RegisterWriter writer(core.requiredRegisterWidth());
    QList<QBitArray> image;
    if (program.tables == TriggerProgram::Tables::AnyInput) {
        appendTable(image, 0, TruthTable::constant(int(program.units.size()), true), writer);
        return image;
    }
    image.reserve(qsizetype(program.expressions.size()) * program.inputCount());
    for (size_t e = 0; e < program.expressions.size(); ++e)
        appendTable(image, qint64(e), program.expressions[e].table, writer);
    return image;
}

} // namespace KEO
