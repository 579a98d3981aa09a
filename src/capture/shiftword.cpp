#include "shiftword.h"

#include "bits.h"

#include <QString>

#include <algorithm>

namespace KEO {

namespace {

QBitArray addressWord(const QString &opcode, qint64 address, const QBitArray &rest)
{
    return concatBits(concatBits(bitsOfString(opcode), bitsOfInt16(qint32(address))), rest);
}

} // namespace

QBitArray coreSelectWord(int coreIndex)
{
    return concatBits(bitsOfString(QStringLiteral("1")), alignBits(bitsOfInt32(coreIndex), 4));
}

QBitArray writeRegisterWord(qint64 address, const QBitArray &data)
{
    return addressWord(QStringLiteral("01001"), address, data);
}

QBitArray readRegisterWord(qint64 address)
{
    return addressWord(QStringLiteral("01101"), address, {});
}

QBitArray readBlockWord(qint64 address, int count)
{
    return addressWord(QStringLiteral("00111"), address, bitsOfInt16(count));
}

QBitArray shiftOutWord(qint64 address, int bits)
{
    return addressWord(QStringLiteral("00111"), address, QBitArray(std::max(bits, 0)));
}

} // namespace KEO
