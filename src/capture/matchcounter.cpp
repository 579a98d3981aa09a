#include "matchcounter.h"

#include <algorithm>
#include <bit>

namespace KEO {

namespace {

using Words = std::vector<quint64>;

constexpr quint64 kAll = ~quint64(0);

/// Those of \a from that are still set if \a by samples earlier there is a sample of \a words.
/// Before the window there are as many as there are bits in \a filling.
Words andDelayed(Words from, const Words &words, qsizetype by, quint64 filling)
{
    const auto whole = size_t(by / 64);
    const int rest = int(by % 64);
    const auto wordAt = [&](size_t i, size_t back) { return i < back ? filling : words[i - back]; };
    for (size_t i = 0; i < from.size(); ++i) {
        quint64 delayed = wordAt(i, whole) << rest;
        if (rest != 0)
            delayed |= wordAt(i, whole + 1) >> (64 - rest);
        from[i] &= delayed;
    }
    return from;
}

/// Where \a count samples of \a words in a row end.
Words endsOfRuns(Words words, int count, quint64 filling)
{
    const int doublings = std::bit_width(unsigned(count)) - 1;
    int length = 1;
    for (int i = 0; i < doublings; ++i, length *= 2)
        words = andDelayed(words, words, length, filling);
    return length == count ? words : andDelayed(words, words, count - length, filling);
}

/// Sets everything from the sample on that is number \a count of those in \a words.
Words fromNumber(const Words &words, int count)
{
    Words after(words.size(), 0);
    qsizetype left = count;
    for (size_t i = 0; i < words.size(); ++i) {
        quint64 word = words[i];
        const int here = std::popcount(word);
        if (here < left) {
            left -= here;
            continue;
        }
        for (; left > 1; --left)
            word &= word - 1;
        after[i] = kAll << std::countr_zero(word);
        std::fill(after.begin() + qsizetype(i) + 1, after.end(), kAll);
        break;
    }
    return after;
}

/// Clears what lies before \a sample.
void clearBefore(Words &words, qsizetype sample)
{
    for (size_t i = 0; i < words.size(); ++i)
        words[i] &= ~windowBits(sample, i);
}

} // namespace

ConditionTrack countMatches(const UnitProgram &unit, const ConditionTrack &matches,
                            qsizetype samples, ArmedAt armed)
{
    if (!unit.count)
        return matches;
    Words surely = matches.holds;
    Words maybe = matches.holds;
    for (size_t i = 0; i < maybe.size(); ++i)
        maybe[i] |= ~matches.known[i];
    if (armed) {
        clearBefore(surely, *armed);
        clearBefore(maybe, *armed);
    }
    if (unit.counting == Counting::Continuous) {
        surely = endsOfRuns(std::move(surely), *unit.count, 0);
        maybe = endsOfRuns(std::move(maybe), *unit.count, armed ? 0 : kAll);
    } else {
        surely = fromNumber(surely, *unit.count);
        if (armed)
            maybe = fromNumber(maybe, *unit.count);
        else
            maybe.assign(maybe.size(), kAll);
    }
    ConditionTrack reports;
    for (size_t i = 0; i < surely.size(); ++i) {
        const quint64 inside = windowBits(samples, i);
        reports.known.push_back((surely[i] | ~maybe[i]) & inside);
        reports.holds.push_back(surely[i] & inside);
    }
    return reports;
}

} // namespace KEO
