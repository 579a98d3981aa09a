#pragma once

#include <QBitArray>
#include <QtEndian>

#include <array>
#include <cstring>

namespace KEO {

/// The 64 bits of \a bits from index \a first on, which must be a multiple of 8 and not negative:
/// bit k of the result is bit first + k of the array. Bits past the end read as 0.
inline quint64 bitWord(const QBitArray &bits, qsizetype first)
{
    const qsizetype bytes = (bits.size() + 7) / 8 - first / 8; // unused bits of the last are 0
    if (bytes <= 0)
        return 0;
    quint64 word = 0;
    if (bytes >= qsizetype(sizeof word)) // of a size that the compiler knows
        std::memcpy(&word, bits.bits() + first / 8, sizeof word);
    else
        std::memcpy(&word, bits.bits() + first / 8, size_t(bytes));
    return qFromLittleEndian(word);
}

/// \a word with bit 0 and bit 63 exchanged, and so on inwards.
constexpr quint64 reversedBits(quint64 word)
{
    word = (word >> 1 & 0x5555555555555555U) | (word & 0x5555555555555555U) << 1;
    word = (word >> 2 & 0x3333333333333333U) | (word & 0x3333333333333333U) << 2;
    word = (word >> 4 & 0x0F0F0F0F0F0F0F0FU) | (word & 0x0F0F0F0F0F0F0F0FU) << 4;
    word = (word >> 8 & 0x00FF00FF00FF00FFU) | (word & 0x00FF00FF00FF00FFU) << 8;
    word = (word >> 16 & 0x0000FFFF0000FFFFU) | (word & 0x0000FFFF0000FFFFU) << 16;
    return word >> 32 | word << 32;
}

/// 64 words of 64 bits.
using BitSquare = std::array<quint64, 64>;
/// Swaps rows and columns: bit c of word r becomes bit r of word c.
void transposeBits(BitSquare &square);

} // namespace KEO
