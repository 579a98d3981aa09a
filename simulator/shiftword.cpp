#include "shiftword.h"

#include "bits.h"

namespace Sim {

namespace {

constexpr int kSelectBits = 5;
constexpr int kOpcodeBits = 5;
constexpr int kAddressBits = 16;
constexpr int kHeadBits = kOpcodeBits + kAddressBits;

QString hexOf(const QBitArray &bits)
{
    QString text;
    for (qsizetype end = bits.size(); end > 0; end -= 4) {
        const qsizetype from = qMax<qsizetype>(0, end - 4);
        text.prepend(QString::number(numberAt(bits, from, end - from), 16));
    }
    qsizetype zeros = 0;
    while (zeros + 1 < text.size() && text.at(zeros) == u'0')
        ++zeros;
    return QStringLiteral("0x") + text.mid(zeros);
}

QString addressText(quint16 address)
{
    return QStringLiteral("0x%1").arg(address, 4, 16, QLatin1Char('0'));
}

} // namespace

ShiftWord parseShiftWord(const QBitArray &word)
{
    ShiftWord parsed;
    if (word.size() == kSelectBits && word.testBit(0)) {
        parsed.kind = ShiftWord::Kind::CoreSelect;
        parsed.core = int(numberAt(word, 1, kSelectBits - 1));
        return parsed;
    }
    if (word.size() < kHeadBits) {
        parsed.flaw = QStringLiteral("a word of %1 bits is none of the core's").arg(word.size());
        return parsed;
    }
    parsed.address = quint16(numberAt(word, kOpcodeBits, kAddressBits));
    parsed.data.resize(word.size() - kHeadBits);
    for (qsizetype i = kHeadBits; i < word.size(); ++i)
        parsed.data.setBit(i - kHeadBits, word.testBit(i));

    const quint64 opcode = numberAt(word, 0, kOpcodeBits);
    switch (opcode) {
    case 0b01001:
        parsed.kind = ShiftWord::Kind::RegisterWrite;
        break;
    case 0b01101:
        parsed.kind = ShiftWord::Kind::ReadSelect;
        break;
    case 0b00111:
        parsed.kind = ShiftWord::Kind::Block;
        break;
    default:
        parsed.flaw = QStringLiteral("a word of %1 bits has the unknown opcode %2")
                          .arg(word.size())
                          .arg(opcode, kOpcodeBits, 2, QLatin1Char('0'));
    }
    return parsed;
}

QString describe(const ShiftWord &word)
{
    switch (word.kind) {
    case ShiftWord::Kind::CoreSelect:
        return QStringLiteral("select core %1").arg(word.core);
    case ShiftWord::Kind::RegisterWrite:
        return QStringLiteral("write %1 = %2 (%3 bits)")
            .arg(addressText(word.address), hexOf(word.data))
            .arg(word.data.size());
    case ShiftWord::Kind::ReadSelect:
        return QStringLiteral("select %1 for reading").arg(addressText(word.address));
    case ShiftWord::Kind::Block:
        return QStringLiteral("block from row %1, tail %2 (%3 bits)")
            .arg(word.address)
            .arg(hexOf(word.data))
            .arg(word.data.size());
    case ShiftWord::Kind::Malformed:
        break;
    }
    return word.flaw;
}

} // namespace Sim
