#include "litecoremodel.h"

#include <algorithm>

namespace Sim {

namespace {

constexpr quint16 kStart = 0x0000;
constexpr quint16 kCaptureInit = 0x0002;
constexpr int kTrailingBits = 1;

} // namespace

LiteCoreModel::LiteCoreModel(LiteCoreDescription description, BitMatrix stimulus,
                             FirstSample firstSample, Report report)
    : m_description(std::move(description)),
      m_stimulus(std::move(stimulus)),
      m_width(int(m_description.captured.size())),
      m_firstRow(firstSample == FirstSample::SecondRow ? 1 : 0),
      m_report(std::move(report)),
      m_memory(size_t(m_description.captureAmount), -1)
{
    Q_ASSERT(m_stimulus.rows() > 0);
    if (!m_description.capturesInitData)
        return;
    start();
    advance(m_description.captureAmount);
    m_holdsInitData = true;
}

void LiteCoreModel::shiftIn(const ShiftWord &word)
{
    switch (word.kind) {
    case ShiftWord::Kind::RegisterWrite:
        return writeRegister(word.address, word.data);
    case ShiftWord::Kind::ReadSelect:
    case ShiftWord::Kind::Block:
        return select(word);
    case ShiftWord::Kind::CoreSelect:
    case ShiftWord::Kind::Malformed:
        m_report(describe(word));
    }
}

void LiteCoreModel::writeRegister(quint16 address, const QBitArray &value)
{
    if (address != kStart) {
        m_report(QStringLiteral("a lite core has no register %1 to write").arg(address));
        return;
    }
    if (value.size() != m_width) {
        m_report(QStringLiteral("a write of %1 bits to the start register, which has %2")
                     .arg(value.size())
                     .arg(m_width));
        return;
    }
    const qsizetype ones = value.count(true);
    if (ones == 1 && value.testBit(m_width - 1))
        start();
    else if (ones == 0)
        m_armed = false;
    else
        m_report(QStringLiteral("the start register of a lite core knows 0 and 1"));
}

void LiteCoreModel::select(const ShiftWord &word)
{
    m_register.reset();
    m_block.reset();
    const bool isBlock = word.kind == ShiftWord::Kind::Block;
    if (word.data.size() != (isBlock ? m_width : 0))
        m_report(QStringLiteral("%1 bits follow the address of a %2")
                     .arg(word.data.size())
                     .arg(isBlock ? QStringLiteral("block read") : QStringLiteral("read select")));
    else if (isBlock)
        m_block = word.address;
    else if (word.address == kStart || word.address == kCaptureInit)
        m_register = word.address;
    else
        m_report(QStringLiteral("a lite core has no register %1 to read").arg(word.address));
}

QBitArray LiteCoreModel::shiftOut(qsizetype size)
{
    if (m_block)
        return readBlock(*m_block, size);
    if (!m_register) {
        m_report(QStringLiteral("a read, and nothing is selected for reading"));
        return {};
    }
    const bool value = *m_register == kStart ? m_armed : !m_holdsInitData;
    QBitArray bits = rightAligned(value ? 1 : 0, m_width);
    if (bits.size() != size) {
        m_report(
            QStringLiteral("a read of %1 bits where %2 are to come").arg(size).arg(bits.size()));
        bits.resize(size);
    }
    return bits;
}

QBitArray LiteCoreModel::readBlock(quint16 address, qsizetype size)
{
    const qint64 rows = (size - kTrailingBits) / m_width;
    if (rows * m_width + kTrailingBits != size)
        m_report(QStringLiteral("a block of %1 bits, and a row has %2").arg(size).arg(m_width));
    BitWriter writer(size);
    const qint64 depth = qint64(m_memory.size());
    for (qint64 row = address + rows - 1; row >= address; --row) {
        const qint64 sample = row < depth ? m_memory[size_t(row)] : -1;
        if (sample < 0)
            writer.appendZeros(m_width);
        else
            writer.appendPacked(m_stimulus.row(sample), m_width);
    }
    writer.appendZeros(size - rows * m_width);
    if (address + rows >= depth)
        m_holdsInitData = false;
    return writer.take();
}

void LiteCoreModel::start()
{
    m_holdsInitData = false;
    m_taken = 0;
    m_armed = true;
}

void LiteCoreModel::advance(qint64 samples)
{
    const qint64 depth = qint64(m_memory.size());
    for (; m_armed && samples > 0; --samples) {
        m_memory[size_t((m_firstRow + m_taken) % depth)] = m_next;
        m_next = (m_next + 1) % m_stimulus.rows();
        m_armed = ++m_taken < depth;
    }
}

} // namespace Sim
