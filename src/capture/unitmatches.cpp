#include "triggerevaluation.h"

#include <base/bitwords.h>

#include <algorithm>
#include <array>
#include <utility>

// Both states of a bit are looked at, whether it can be 0 and whether it can be 1: a captured bit
// can be one of them, any other both. A comparison likewise can hold, can fail, or can do either.

namespace KEO {

namespace {

constexpr size_t kBlockWords = 64; // worked on together, in loops of one length
using Block = std::array<quint64, kBlockWords>;

constexpr quint64 kAll = ~quint64(0);

struct Levels
{
    Block can0;
    Block can1;
};

struct Outcome
{
    Block canHold;
    Block canFail;
};

template <typename Operation>
void forEachWord(Operation operation)
{
    for (size_t i = 0; i < kBlockWords; ++i)
        operation(i);
}

/// Whether a loop over the bits of a port can end before bit \a bit, since \a open has nothing left
/// to decide. Looked at now and then only.
bool isDecided(const Block &open, qsizetype bit)
{
    return bit % 8 == 0 && std::ranges::all_of(open, [](quint64 word) { return word == 0; });
}

/// The levels of a bit in the block from word \a first on; null was not captured.
void readLevels(Levels &levels, const QBitArray *bits, size_t first)
{
    forEachWord([&](size_t i) {
        const quint64 there = bits ? windowBits(bits->size(), first + i) : 0;
        const quint64 word = bits ? bitWord(*bits, qsizetype(first + i) * 64) : 0;
        levels.can1[i] = word | ~there;
        levels.can0[i] = ~word | ~there;
    });
}

/// The same a sample before; \a before are the words in front of the block.
void delay(Block &block, quint64 before)
{
    for (quint64 &word : block) {
        const quint64 delayed = word << 1 | before >> 63;
        before = std::exchange(word, delayed);
    }
}

/// The bits of a port in one block of a window.
class PortBlock final
{
public:
    PortBlock(const PortSamples &ports, int port, size_t first)
        : m_ports(ports), m_port(port), m_first(first)
    {
    }

    void read(Levels &levels, qsizetype bit) const
    {
        readLevels(levels, m_ports.bit(m_port, int(bit)), m_first);
    }

    void readBefore(Levels &levels, qsizetype bit) const
    {
        const QBitArray *bits = m_ports.bit(m_port, int(bit));
        readLevels(levels, bits, m_first);
        if (!bits || m_first == 0) {
            delay(levels.can0, kAll);
            delay(levels.can1, kAll);
            return;
        }
        const size_t last = m_first - 1;
        const quint64 missing = ~windowBits(bits->size(), last);
        const quint64 word = bitWord(*bits, qsizetype(last) * 64);
        delay(levels.can0, ~word | missing);
        delay(levels.can1, word | missing);
    }

    [[nodiscard]] bool isCaptured(qsizetype bit, qsizetype samples) const
    {
        const QBitArray *bits = m_ports.bit(m_port, int(bit));
        return bits && bits->size() >= samples;
    }

private:
    const PortSamples &m_ports;
    int m_port;
    size_t m_first;
};

/// Whether the bits of a pattern are as it wants them.
Outcome comparePattern(const MatchUnitWords &words, const PortBlock &port)
{
    Outcome all;
    all.canHold.fill(kAll);
    all.canFail.fill(0);
    Levels now;
    Levels before;
    const auto add = [&](auto holds, auto fails) {
        forEachWord([&](size_t i) {
            all.canHold[i] &= holds(i);
            all.canFail[i] |= fails(i);
        });
    };
    const auto rises = [&](size_t i) { return now.can1[i] & before.can0[i]; };
    const auto falls = [&](size_t i) { return now.can0[i] & before.can1[i]; };
    const auto changes = [&](size_t i) { return rises(i) | falls(i); };
    const auto stays = [&](size_t i) {
        return (now.can0[i] & before.can0[i]) | (now.can1[i] & before.can1[i]);
    };
    for (qsizetype bit = 0; bit < words.compareWord.size() && !isDecided(all.canHold, bit); ++bit) {
        const bool compare = words.compareWord.testBit(bit);
        const bool mask = words.maskWord.testBit(bit);
        const bool edge = words.edgeWord.testBit(bit);
        if (!edge && !mask)
            continue;
        port.read(now, bit);
        if (!edge) {
            if (!compare)
                std::swap(now.can0, now.can1);
            add([&](size_t i) { return now.can1[i]; }, [&](size_t i) { return now.can0[i]; });
            continue;
        }
        port.readBefore(before, bit);
        if (mask && compare)
            add(stays, changes);
        else if (mask)
            add(changes, stays);
        else if (compare)
            add(falls, [&](size_t i) { return now.can1[i] | before.can0[i]; });
        else
            add(rises, [&](size_t i) { return now.can0[i] | before.can1[i]; });
    }
    return all;
}

/// How the number on a port can stand to a bound.
struct Order
{
    Block below;
    Block equal;
    Block above;
};

Order compareBound(const QBitArray &bound, const PortBlock &port)
{
    Order order;
    order.below.fill(0);
    order.equal.fill(kAll);
    order.above.fill(0);
    Levels now;
    for (qsizetype bit = 0; bit < bound.size() && !isDecided(order.equal, bit); ++bit) {
        port.read(now, bit);
        const bool one = bound.testBit(bit);
        const Block &same = one ? now.can1 : now.can0;
        const Block &other = one ? now.can0 : now.can1;
        Block &decided = one ? order.below : order.above;
        forEachWord([&](size_t i) {
            decided[i] |= order.equal[i] & other[i];
            order.equal[i] &= same[i];
        });
    }
    return order;
}

/// Whether the number can lie from \a low to \a high. Not what the two bounds allow each by itself:
/// with a bit unknown there may be numbers below and above, and none between.
Block canLieBetween(const QBitArray &low, const QBitArray &high, const PortBlock &port)
{
    // What the bits so far can be: those of both bounds, of one alone, or of neither.
    Block both;
    Block ofLow{};
    Block ofHigh{};
    Block inside{};
    both.fill(kAll);
    Levels now;
    for (qsizetype bit = 0; bit < low.size(); ++bit) {
        port.read(now, bit);
        const bool lowOne = low.testBit(bit);
        const bool highOne = high.testBit(bit);
        forEachWord([&](size_t i) {
            const quint64 can0 = now.can0[i];
            const quint64 can1 = now.can1[i];
            inside[i] |= (lowOne ? 0 : ofLow[i] & can1) | (highOne ? ofHigh[i] & can0 : 0);
            ofLow[i] &= lowOne ? can1 : can0;
            ofHigh[i] &= highOne ? can1 : can0;
            if (lowOne == highOne) {
                both[i] &= lowOne ? can1 : can0;
                return;
            }
            if (highOne) {
                ofLow[i] |= both[i] & can0;
                ofHigh[i] |= both[i] & can1;
            }
            both[i] = 0;
        });
    }
    forEachWord([&](size_t i) { inside[i] |= both[i] | ofLow[i] | ofHigh[i]; });
    return inside;
}

Outcome compareRange(const UnitProgram &unit, const PortBlock &port, bool isAllCaptured)
{
    const Order low = compareBound(unit.words.compareWord, port);
    const Order high = compareBound(unit.words.maskWord, port);
    Outcome outcome;
    forEachWord([&](size_t i) { outcome.canFail[i] = low.below[i] | high.above[i]; });
    if (isAllCaptured)
        forEachWord([&](size_t i) { outcome.canHold[i] = ~outcome.canFail[i]; });
    else
        outcome.canHold = canLieBetween(unit.words.compareWord, unit.words.maskWord, port);
    return outcome;
}

Outcome either(const Block &holds, const Block &fails, const Block &equal, bool holdsEqual)
{
    Outcome outcome{holds, fails};
    Block &withEqual = holdsEqual ? outcome.canHold : outcome.canFail;
    forEachWord([&](size_t i) { withEqual[i] |= equal[i]; });
    return outcome;
}

Outcome compare(const UnitProgram &unit, const PortBlock &port, bool isAllCaptured)
{
    switch (unit.function) {
    case MatchFunction::Equal:
    case MatchFunction::NotEqual:
        return comparePattern(unit.words, port);
    case MatchFunction::Greater:
    case MatchFunction::GreaterOrEqual: {
        const Order order = compareBound(unit.words.compareWord, port);
        return either(order.above, order.below, order.equal,
                      unit.function == MatchFunction::GreaterOrEqual);
    }
    case MatchFunction::Less:
    case MatchFunction::LessOrEqual: {
        const Order order = compareBound(unit.words.maskWord, port);
        return either(order.below, order.above, order.equal,
                      unit.function == MatchFunction::LessOrEqual);
    }
    case MatchFunction::InRange:
    case MatchFunction::NotInRange:
        break;
    }
    return compareRange(unit, port, isAllCaptured);
}

bool isNegated(MatchFunction function)
{
    return function == MatchFunction::NotEqual || function == MatchFunction::NotInRange;
}

} // namespace

ConditionTrack unitMatches(const UnitProgram &unit, const PortSamples &ports)
{
    ConditionTrack track = ConditionTrack::unknown(ports.samples());
    const size_t words = track.known.size();
    bool isAllCaptured = true;
    for (int bit = 0; bit < unit.width; ++bit)
        isAllCaptured &= PortBlock(ports, unit.port, 0).isCaptured(bit, ports.samples());
    for (size_t first = 0; first < words; first += kBlockWords) {
        Outcome outcome = compare(unit, PortBlock(ports, unit.port, first), isAllCaptured);
        if (isNegated(unit.function))
            std::swap(outcome.canHold, outcome.canFail);
        for (size_t i = 0; i < std::min(kBlockWords, words - first); ++i) {
            const quint64 inside = windowBits(ports.samples(), first + i);
            track.known[first + i] = (outcome.canHold[i] ^ outcome.canFail[i]) & inside;
            track.holds[first + i] = outcome.canHold[i] & ~outcome.canFail[i] & inside;
        }
    }
    return track;
}

} // namespace KEO
