#include "triggerdiagnosis.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

// Works on 64 samples at a time: a word holds one bit of the port at 64 samples, and a number that
// differs from sample to sample is a word for each of its binary digits.

namespace KEO {

namespace {

using Words = std::vector<quint64>;
using To = NearestMiss::To;

constexpr size_t kCountBits = 32; // of a number of bits that are wrong

/// The samples of a bit that was captured, and 0 for those that it lacks of a window of so many
/// words.
Words wordsOf(const QBitArray &bits, size_t words)
{
    Words samples(std::max(words, trackWords(bits.size())), 0);
    if (!bits.isEmpty()) // which has no bytes to point to
        std::memcpy(samples.data(), bits.bits(), size_t(bits.size() + 7) / 8);
    qFromLittleEndian<quint64>(samples.data(), qsizetype(samples.size()), samples.data());
    return samples;
}

QBitArray portAt(const PortSamples &ports, const UnitProgram &unit, qsizetype sample)
{
    QBitArray value(unit.width);
    for (int bit = 0; bit < unit.width; ++bit)
        value.setBit(bit, ports.bit(unit.port, bit)->testBit(sample));
    return value;
}

/// A bit of the port that a pattern looks at and that was captured.
struct LookedAt
{
    int bit = 0;
    qsizetype captured = 0; ///< samples, maybe fewer than the window's
    Words samples{};
    bool compare = false;
    bool mask = false;
    bool edge = false;

    /// The samples of word \a i at which it does not fit. What it was before the first one is not
    /// known, so that no edge is missing there.
    [[nodiscard]] quint64 wrongIn(size_t i) const
    {
        const quint64 there = windowBits(captured, i);
        if (there == 0)
            return 0;
        const quint64 now = samples[i];
        if (!edge)
            return (compare ? ~now : now) & there;
        const quint64 before = now << 1 | (i > 0 ? samples[i - 1] >> 63 : 0);
        const quint64 known = i > 0 ? there : there & ~quint64(1);
        const quint64 changed = now ^ before;
        if (mask)
            return (compare ? changed : ~changed) & known;
        return ~(changed & (compare ? before : now)) & known;
    }
};

std::vector<LookedAt> lookedAt(const UnitProgram &unit, const PortSamples &ports, size_t words)
{
    std::vector<LookedAt> bits;
    for (int bit = 0; bit < unit.width; ++bit) {
        const bool mask = unit.words.maskWord.testBit(bit);
        const bool edge = unit.words.edgeWord.testBit(bit);
        const QBitArray *samples = ports.bit(unit.port, bit);
        if ((mask || edge) && samples)
            bits.push_back({bit, samples->size(), wordsOf(*samples, words),
                            unit.words.compareWord.testBit(bit), mask, edge});
    }
    return bits;
}

std::optional<NearestMiss> nearestPattern(const UnitProgram &unit, const PortSamples &ports,
                                          const Words &misses)
{
    const std::vector<LookedAt> bits = lookedAt(unit, ports, misses.size());
    std::optional<NearestMiss> nearest;
    quint64 fewest = ~quint64(0);
    for (size_t i = 0; i < misses.size(); ++i) {
        quint64 left = misses[i];
        if (left == 0)
            continue;
        std::array<quint64, kCountBits> wrong{}; // at each sample, lowest digit first
        size_t digits = 0;
        for (const LookedAt &bit : bits) {
            quint64 carry = bit.wrongIn(i);
            for (size_t digit = 0; carry != 0; ++digit) {
                const quint64 next = wrong[digit] & carry;
                wrong[digit] ^= carry;
                carry = next;
                digits = std::max(digits, digit + 1);
            }
        }
        quint64 count = 0;
        for (size_t digit = digits; digit-- > 0;) {
            const quint64 smaller = left & ~wrong[digit];
            count = count << 1 | (smaller == 0 ? 1 : 0);
            left = smaller == 0 ? left : smaller;
        }
        if (count >= fewest)
            continue;
        fewest = count;
        nearest.emplace();
        nearest->sample = qsizetype(i) * 64 + std::countr_zero(left);
    }
    if (nearest && unit.function == MatchFunction::Equal) {
        const size_t word = size_t(nearest->sample / 64);
        for (const LookedAt &bit : bits) {
            if ((bit.wrongIn(word) >> (nearest->sample % 64)) & 1)
                nearest->wrongBits.append(bit.bit);
        }
    }
    return nearest;
}

/// Of a number, from the most significant one.
using Digits = std::vector<Words>;

enum class Extreme { Least, Greatest };

/// Where a number is the least or the greatest of those at \a among; nowhere if there is none.
Words extremes(const Digits &digits, Words among, Extreme extreme)
{
    const quint64 turn = extreme == Extreme::Greatest ? 0 : ~quint64(0);
    for (const Words &digit : digits) {
        quint64 any = 0;
        for (size_t i = 0; i < among.size(); ++i)
            any |= among[i] & (digit[i] ^ turn);
        if (any == 0)
            continue;
        for (size_t i = 0; i < among.size(); ++i)
            among[i] &= digit[i] ^ turn;
    }
    return among;
}

/// The samples of \a among at which the number is below \a bound.
Words below(const Digits &digits, const QBitArray &bound, const Words &among)
{
    Words less(among.size(), 0);
    Words equal = among;
    for (size_t bit = 0; bit < digits.size(); ++bit) {
        const bool one = bound.testBit(qsizetype(bit));
        for (size_t i = 0; i < among.size(); ++i) {
            if (one)
                less[i] |= equal[i] & ~digits[bit][i];
            equal[i] &= one ? digits[bit][i] : ~digits[bit][i];
        }
    }
    return less;
}

/// \a a - \a b, or \a b - \a a where that is the positive one.
QBitArray distanceOf(const QBitArray &a, const QBitArray &b)
{
    QBitArray distance(a.size());
    bool borrow = false;
    for (qsizetype bit = a.size() - 1; bit >= 0; --bit) {
        const int difference = int(a.testBit(bit)) - int(b.testBit(bit)) - int(borrow);
        distance.setBit(bit, difference & 1);
        borrow = difference < 0;
    }
    return borrow ? distanceOf(b, a) : distance;
}

bool isLess(const QBitArray &a, const QBitArray &b)
{
    for (qsizetype bit = 0; bit < a.size(); ++bit) {
        if (a.testBit(bit) != b.testBit(bit))
            return b.testBit(bit);
    }
    return false;
}

/// The nearest to a bound on one of its sides.
struct Side
{
    To to;
    Extreme extreme; ///< of the values of that side
    Words among;
};

std::vector<Side> sidesOf(const UnitProgram &unit, const Digits &digits, const Words &misses)
{
    switch (unit.function) {
    case MatchFunction::Greater:
    case MatchFunction::GreaterOrEqual:
        return {{To::Minimum, Extreme::Greatest, misses}};
    case MatchFunction::Less:
    case MatchFunction::LessOrEqual:
        return {{To::Maximum, Extreme::Least, misses}};
    case MatchFunction::NotInRange:
        return {{To::Minimum, Extreme::Least, misses}, {To::Maximum, Extreme::Greatest, misses}};
    default:
        break;
    }
    const Words low = below(digits, unit.words.compareWord, misses);
    Words high = misses; // above the maximum, or, of an empty range, whatever is not below
    for (size_t i = 0; i < high.size(); ++i)
        high[i] &= ~low[i];
    return {{To::Minimum, Extreme::Greatest, low}, {To::Maximum, Extreme::Least, high}};
}

std::optional<NearestMiss> nearestNumber(const UnitProgram &unit, const PortSamples &ports,
                                         Words misses)
{
    Digits digits;
    for (int bit = 0; bit < unit.width; ++bit) {
        const QBitArray *samples = ports.bit(unit.port, bit);
        if (!samples)
            return std::nullopt;
        digits.push_back(wordsOf(*samples, misses.size()));
        for (size_t i = 0; i < misses.size(); ++i)
            misses[i] &= windowBits(samples->size(), i);
    }
    std::optional<NearestMiss> nearest;
    for (const Side &side : sidesOf(unit, digits, misses)) {
        const Words places = extremes(digits, side.among, side.extreme);
        const auto word = std::ranges::find_if(places, [](quint64 w) { return w != 0; });
        if (word == places.end())
            continue;
        NearestMiss miss;
        miss.sample = (word - places.begin()) * 64 + std::countr_zero(*word);
        miss.to = side.to;
        miss.value = portAt(ports, unit, miss.sample);
        miss.bound = side.to == To::Minimum ? unit.words.compareWord : unit.words.maskWord;
        miss.distance = distanceOf(miss.value, miss.bound);
        const bool isNearer = !nearest || isLess(miss.distance, nearest->distance) ||
                              (miss.distance == nearest->distance && miss.sample < nearest->sample);
        if (isNearer)
            nearest = miss;
    }
    return nearest;
}

} // namespace

std::optional<NearestMiss> nearestMiss(const UnitProgram &unit, const PortSamples &ports,
                                       const ConditionTrack &matches)
{
    Words misses = matches.known;
    for (size_t i = 0; i < misses.size(); ++i)
        misses[i] &= ~matches.holds[i];
    if (std::ranges::all_of(misses, [](quint64 word) { return word == 0; }))
        return std::nullopt;
    return isEqualityFunction(unit.function) ? nearestPattern(unit, ports, misses)
                                             : nearestNumber(unit, ports, misses);
}

} // namespace KEO
