#include "bits.h"

#include <algorithm>

namespace KEO {

namespace {

QBitArray bitsOfNumber(quint32 value, int width)
{
    QBitArray bits(width);
    for (int i = 0; i < width; ++i)
        bits.setBit(i, (value >> (width - 1 - i)) & 1);
    return bits;
}

/// The length of a run of \a count (negative: all) from \a start in a bit string of \a size.
qsizetype runLength(qsizetype size, qsizetype start, qsizetype count)
{
    const qsizetype rest = std::max<qsizetype>(size - start, 0);
    return count < 0 ? rest : std::min(count, rest);
}

} // namespace

QBitArray bitsOfString(const QString &text)
{
    QBitArray bits(text.size());
    for (qsizetype i = 0; i < text.size(); ++i)
        bits.setBit(i, text[i] != u'0');
    return bits;
}

QBitArray bitsOfBytes(const QByteArray &bytes, qsizetype start, qsizetype count)
{
    start = std::max<qsizetype>(start, 0);
    QBitArray bits(runLength(bytes.size() * 8, start, count));
    for (qsizetype i = 0; i < bits.size(); ++i) {
        const qsizetype position = start + i;
        bits.setBit(i, (uchar(bytes[position / 8]) >> (7 - position % 8)) & 1);
    }
    return bits;
}

QBitArray bitsOfInt32(qint32 value)
{
    return bitsOfNumber(quint32(value), 32);
}

QBitArray bitsOfInt16(qint32 value)
{
    return bitsOfNumber(quint32(value), 16);
}

QBitArray alignBits(const QBitArray &bits, qsizetype width)
{
    QBitArray aligned(std::max<qsizetype>(width, 0));
    const qsizetype kept = std::min(bits.size(), aligned.size());
    for (qsizetype i = 1; i <= kept; ++i)
        aligned.setBit(aligned.size() - i, bits.testBit(bits.size() - i));
    return aligned;
}

QBitArray concatBits(const QBitArray &a, const QBitArray &b)
{
    QBitArray joined = a;
    joined.resize(a.size() + b.size());
    for (qsizetype i = 0; i < b.size(); ++i)
        joined.setBit(a.size() + i, b.testBit(i));
    return joined;
}

QBitArray sliceBits(const QBitArray &bits, qsizetype start, qsizetype count)
{
    start = std::max<qsizetype>(start, 0);
    const qsizetype length = runLength(bits.size(), start, count);
    if (length == 0)
        return {};
    const qsizetype shift = start % 8;
    if (shift == 0)
        return QBitArray::fromBits(bits.bits() + start / 8, length);

    const qsizetype available = (bits.size() + 7) / 8;
    QByteArray bytes((length + 7) / 8, Qt::Uninitialized);
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const qsizetype from = start / 8 + i;
        const uint low = uchar(bits.bits()[from]);
        const uint high = from + 1 < available ? uchar(bits.bits()[from + 1]) : 0;
        bytes[i] = char((low >> shift) | (high << (8 - shift)));
    }
    return QBitArray::fromBits(bytes.constData(), length);
}

QBitArray dropFrontBits(const QBitArray &bits, qsizetype n)
{
    return sliceBits(bits, n);
}

QBitArray dropBackBits(const QBitArray &bits, qsizetype n)
{
    return sliceBits(bits, 0, std::max<qsizetype>(bits.size() - std::max<qsizetype>(n, 0), 0));
}

bool isZeroBits(const QBitArray &bits)
{
    return bits.count(true) == 0;
}

quint32 packMaskedBits(quint32 value, const QBitArray &mask)
{
    quint32 packed = 0;
    int position = 0;
    const qsizetype end = std::min<qsizetype>(mask.size(), 32);
    for (qsizetype i = 0; i < end; ++i) {
        if (mask.testBit(i))
            packed |= ((value >> i) & 1) << position++;
    }
    return packed;
}

} // namespace KEO
