#include "radixtext.h"

#include <QVarLengthArray>

#include <algorithm>
#include <charconv>

namespace WaveMonitor {

namespace {

/// Digits of \a digitBits bits each, leading zeros kept, written from the last one to the first.
template <int digitBits>
qsizetype powerOfTwoText(const quint64 *words, qsizetype bits, char *out)
{
    constexpr quint64 mask = (1U << digitBits) - 1;
    const qsizetype digits = (bits + digitBits - 1) / digitBits;
    const qsizetype lastWord = (bits - 1) / 64;
    for (qsizetype i = 0; i < digits; ++i) {
        const qsizetype position = i * digitBits;
        const qsizetype word = position / 64;
        const int shift = int(position % 64);
        quint64 digit = words[word] >> shift;
        if (shift > 64 - digitBits && word < lastWord)
            digit |= words[word + 1] << (64 - shift);
        out[digits - 1 - i] = "0123456789ABCDEF"[digit & mask];
    }
    return digits;
}

constexpr quint32 kChunk = 1'000'000'000; // greatest power of ten in 32 bits
constexpr int kChunkDigits = 9;
using Limbs = QVarLengthArray<quint32, 64>;

/// Long division of the whole number by a power of ten, nine digits at a time.
qsizetype decimalText(Limbs limbs, char *out)
{
    QVarLengthArray<quint32, 64> chunks; // least significant first
    qsizetype size = limbs.size();
    do {
        quint64 rest = 0;
        for (qsizetype i = size - 1; i >= 0; --i) {
            rest = rest << 32 | limbs[i];
            limbs[i] = quint32(rest / kChunk);
            rest %= kChunk;
        }
        chunks.append(quint32(rest));
        while (size > 0 && limbs[size - 1] == 0)
            --size;
    } while (size > 0);

    char *end = std::to_chars(out, out + kChunkDigits + 1, chunks.last()).ptr;
    for (qsizetype i = chunks.size() - 2; i >= 0; --i) {
        quint32 chunk = chunks[i];
        for (int digit = kChunkDigits - 1; digit >= 0; --digit, chunk /= 10)
            end[digit] = char('0' + chunk % 10);
        end += kChunkDigits;
    }
    return end - out;
}

enum class Sign { Plus, Minus };

qsizetype wideDecimalText(const quint64 *words, qsizetype bits, Sign sign, char *out)
{
    const qsizetype count = (bits + 31) / 32;
    Limbs limbs(count);
    for (qsizetype i = 0; i < count; ++i)
        limbs[i] = quint32(words[i / 2] >> (i % 2 * 32));
    if (sign == Sign::Plus)
        return decimalText(std::move(limbs), out);

    // Magnitude of a negative number: its complement within the width, plus one.
    bool carry = true;
    for (quint32 &limb : limbs) {
        limb = ~limb + quint32(carry);
        carry = carry && limb == 0;
    }
    if (const int used = int(bits % 32))
        limbs.last() &= (quint32(1) << used) - 1;
    *out = '-';
    return decimalText(std::move(limbs), out + 1) + 1;
}

qsizetype decimalText(const quint64 *words, qsizetype bits, Sign sign, char *out)
{
    if (bits > 64)
        return wideDecimalText(words, bits, sign, out);
    char *end = out + radixTextCapacity(bits);
    if (sign == Sign::Plus)
        return std::to_chars(out, end, words[0]).ptr - out;
    const quint64 magnitude = (~words[0] + 1) & (~quint64(0) >> (64 - bits));
    *out = '-';
    return std::to_chars(out + 1, end, magnitude).ptr - out;
}

} // namespace

qsizetype radixText(DataFormat::Type type, const quint64 *words, qsizetype bits, char *out)
{
    if (bits <= 0) {
        std::copy_n("null", 4, out);
        return 4;
    }
    if (bits == 1) {
        *out = char('0' + words[0]);
        return 1;
    }
    const bool highest = words[(bits - 1) / 64] >> ((bits - 1) % 64) & 1;
    switch (type) {
    case DataFormat::Binary:
        return powerOfTwoText<1>(words, bits, out);
    case DataFormat::Octal:
        return powerOfTwoText<3>(words, bits, out);
    case DataFormat::Hexadecimal:
        return powerOfTwoText<4>(words, bits, out);
    case DataFormat::UnsignedDecimal:
        return decimalText(words, bits, Sign::Plus, out);
    case DataFormat::SignedDecimal:
        return decimalText(words, bits, highest ? Sign::Minus : Sign::Plus, out);
    case DataFormat::Ascii:
        break;
    }
    return 0;
}

} // namespace WaveMonitor
