#include "signaldata.h"

#include <utility>

using WaveMonitor::DataFormat;

namespace KEO {

_Signal::_Signal(QString name, QBitArray data) : m_name(std::move(name)), m_data(std::move(data))
{
}

QString _Signal::value(int sample) const
{
    if (sample < 0 || sample >= m_data.size())
        return {};
    return m_data.testBit(sample) ? QStringLiteral("1") : QStringLiteral("0");
}

DataFormat::Type _Signal::format() const
{
    return DataFormat::Binary;
}

_Bus::_Bus(QString name, DataFormat::Type format, QList<QBitArray> members)
    : m_format(format), m_name(std::move(name)), m_members(std::move(members))
{
}

QString _Bus::value(int sample) const
{
    if (sample < 0 || m_members.isEmpty())
        return {};
    QBitArray bits(m_members.size());
    for (qsizetype i = 0; i < m_members.size(); ++i) {
        if (sample >= m_members[i].size())
            return {};
        bits.setBit(i, m_members[i].testBit(sample));
    }
    return DataFormat(m_format).toText(bits);
}

int _Bus::size() const
{
    return m_members.isEmpty() ? 0 : int(m_members.first().size());
}

} // namespace KEO
