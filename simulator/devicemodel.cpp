#include "devicemodel.h"

#include <algorithm>

namespace Sim {

void DeviceModel::shiftIn(const QBitArray &bits)
{
    const ShiftWord word = parseShiftWord(bits);
    if (word.kind == ShiftWord::Kind::Malformed)
        m_report(word.flaw);
    else if (word.kind == ShiftWord::Kind::CoreSelect)
        select(word.core);
    else if (Core *core = addressed())
        core->shiftIn(word);
    else
        m_report(QStringLiteral("no core is selected for: %1").arg(describe(word)));
}

QBitArray DeviceModel::shiftOut(qsizetype size)
{
    if (Core *core = addressed())
        return core->shiftOut(size);
    m_report(QStringLiteral("a read, and no core is selected"));
    return {};
}

bool DeviceModel::isArmed() const
{
    return (m_lite && m_lite->isArmed()) ||
           std::any_of(m_cores.begin(), m_cores.end(),
                       [](const auto &core) { return core->isArmed(); });
}

void DeviceModel::advance(qint64 samples)
{
    for (const auto &core : m_cores)
        core->advance(samples);
    if (m_lite)
        m_lite->advance(samples);
}

Core *DeviceModel::addressed() const
{
    if (m_lite)
        return m_lite.get();
    return m_selected;
}

void DeviceModel::select(int index)
{
    const auto core = std::find_if(m_cores.begin(), m_cores.end(), [index](const auto &candidate) {
        return candidate->description().index == index;
    });
    m_selected = core == m_cores.end() ? nullptr : core->get();
    if (!m_selected)
        m_report(QStringLiteral("the design has no core %1 to select").arg(index));
}

} // namespace Sim
