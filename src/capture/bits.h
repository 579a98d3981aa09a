#pragma once

#include <QBitArray>
#include <QByteArray>
#include <QString>

namespace KEO {

// Bit strings of the shift words. Element 0 is shifted first, and numbers stand most significant
// bit first. Every function takes any argument: what lies outside a bit string is cut off.

/// One bit for each character, set unless the character is "0".
QBitArray bitsOfString(const QString &text);
/// \a bytes as one stream, most significant bit of each byte first, from bit \a start on; a
/// negative \a count means up to the end.
QBitArray bitsOfBytes(const QByteArray &bytes, qsizetype start = 0, qsizetype count = -1);
/// 32 bits of \a value.
QBitArray bitsOfInt32(qint32 value);
/// The low 16 bits of \a value.
QBitArray bitsOfInt16(qint32 value);
/// \a bits right-aligned in \a width bits: padded with clear bits in front, or without the leading
/// bits that find no room.
QBitArray alignBits(const QBitArray &bits, qsizetype width);
/// \a a followed by \a b.
QBitArray concatBits(const QBitArray &a, const QBitArray &b);
/// \a count bits from \a start on; a negative \a count means up to the end.
QBitArray sliceBits(const QBitArray &bits, qsizetype start, qsizetype count = -1);
/// \a bits without the first \a n; empty when nothing stays.
QBitArray dropFrontBits(const QBitArray &bits, qsizetype n);
/// \a bits without the last \a n; empty when nothing stays.
QBitArray dropBackBits(const QBitArray &bits, qsizetype n);
/// No bit is set, or there is none.
bool isZeroBits(const QBitArray &bits);
/// The bits of \a value at the positions that \a mask has set, packed together: the lowest such
/// position gives bit 0. Bit 0 of \a value belongs to element 0 of \a mask.
quint32 packMaskedBits(quint32 value, const QBitArray &mask);

} // namespace KEO
