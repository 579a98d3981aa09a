#include "conditiontrack.h"

#include <algorithm>
#include <bit>

namespace KEO {

namespace {

constexpr qsizetype kWordBits = 64;

/// The first sample from \a from on at which a bit of the words differs from those of \a filling.
std::optional<qsizetype> nextOther(const std::vector<quint64> &words, qsizetype from,
                                   quint64 filling)
{
    from = std::max<qsizetype>(from, 0);
    quint64 inside = ~quint64(0) << (from % kWordBits);
    for (size_t word = size_t(from / kWordBits); word < words.size(); ++word) {
        if (const quint64 found = (words[word] ^ filling) & inside; found != 0)
            return qsizetype(word) * kWordBits + std::countr_zero(found);
        inside = ~quint64(0);
    }
    return std::nullopt;
}

} // namespace

ConditionTrack ConditionTrack::unknown(qsizetype samples)
{
    const std::vector<quint64> clear(trackWords(samples), 0);
    return {clear, clear};
}

ConditionTrack ConditionTrack::constant(qsizetype samples, bool holds)
{
    ConditionTrack track = unknown(samples);
    for (size_t word = 0; word < track.known.size(); ++word)
        track.known[word] = windowBits(samples, word);
    if (holds)
        track.holds = track.known;
    return track;
}

std::optional<bool> ConditionTrack::at(qsizetype sample) const
{
    const auto word = size_t(sample / kWordBits);
    const quint64 bit = quint64(1) << (sample % kWordBits);
    if ((known[word] & bit) == 0)
        return std::nullopt;
    return (holds[word] & bit) != 0;
}

qsizetype setSamples(const std::vector<quint64> &words)
{
    qsizetype samples = 0;
    for (const quint64 word : words)
        samples += std::popcount(word);
    return samples;
}

std::optional<qsizetype> nextSet(const std::vector<quint64> &words, qsizetype from)
{
    return nextOther(words, from, 0);
}

std::optional<qsizetype> lastSet(const std::vector<quint64> &words, qsizetype before)
{
    before = std::min(before, qsizetype(words.size()) * kWordBits);
    if (before <= 0)
        return std::nullopt;
    auto word = size_t((before - 1) / kWordBits);
    quint64 inside = ~quint64(0) >> (kWordBits - 1 - (before - 1) % kWordBits);
    for (;; --word) {
        if (const quint64 found = words[word] & inside; found != 0)
            return qsizetype(word) * kWordBits + kWordBits - 1 - std::countl_zero(found);
        if (word == 0)
            return std::nullopt;
        inside = ~quint64(0);
    }
}

std::vector<SampleRun> setRuns(const std::vector<quint64> &words)
{
    std::vector<SampleRun> runs;
    const qsizetype end = qsizetype(words.size()) * kWordBits;
    for (auto first = nextSet(words, 0); first;) {
        const qsizetype after = nextOther(words, *first, ~quint64(0)).value_or(end);
        runs.push_back({*first, after - 1});
        first = nextSet(words, after);
    }
    return runs;
}

} // namespace KEO
