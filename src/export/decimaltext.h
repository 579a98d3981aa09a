#pragma once

#include <QtEndian>
#include <QtGlobal>

#include <bit>
#include <charconv>
#include <cstring>

namespace KEO {

/// Bytes that writeDecimal may write, whatever it returns.
inline constexpr qsizetype kDecimalRoom = 24;

/// The digits of \a number, below 10^8, with leading zeros, the first one in the lowest byte, each
/// as a number from 0 to 9. Works on all of them at once.
constexpr quint64 eightDigits(quint32 number)
{
    // Halves of four digits, then quarters of two, then single ones; 10486 / 2^20 and 103 / 2^10
    // are near enough to a hundredth and a tenth.
    quint64 parts = number / 10000 | quint64(number % 10000) << 32;
    quint64 high = parts * 10486 >> 20 & 0x0000007F0000007FU;
    parts = high | (parts - high * 100) << 16;
    high = parts * 103 >> 10 & 0x000F000F000F000FU;
    return high | (parts - high * 10) << 8;
}

/// Writes \a number to \a to and returns the end of the text.
inline char *writeDecimal(char *to, qint64 number)
{
    constexpr quint64 limit = 100'000'000;
    constexpr quint64 zeros = 0x3030303030303030U;
    const auto store = [](char *at, quint64 text) {
        text = qToLittleEndian(text);
        std::memcpy(at, &text, sizeof text);
    };
    if (number < 0 || quint64(number) >= limit * limit)
        return std::to_chars(to, to + kDecimalRoom, number).ptr;
    const auto value = quint64(number);
    const bool isLong = value >= limit;
    const quint64 first = eightDigits(quint32(isLong ? value / limit : value));
    const int leading = std::countr_zero(first | quint64(1) << 56) / 8; // the last digit stays
    store(to, (first | zeros) >> leading * 8);
    to += 8 - leading;
    if (!isLong)
        return to;
    store(to, eightDigits(quint32(value % limit)) | zeros);
    return to + 8;
}

} // namespace KEO
