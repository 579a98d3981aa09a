#pragma once

#include <QtGlobal>

#include <optional>
#include <vector>

namespace KEO {

/// A condition over the samples of a window, 64 samples a word: bit k of word i is sample 64 i + k.
/// Bits past the last sample are clear. Where it isn't known whether it holds, both words have a
/// clear bit.
struct ConditionTrack
{
    std::vector<quint64> known;
    std::vector<quint64> holds; ///< within known

    /// Nothing is known of \a samples samples.
    [[nodiscard]] static ConditionTrack unknown(qsizetype samples);
    /// At all of \a samples samples it is known whether it holds: \a holds.
    [[nodiscard]] static ConditionTrack constant(qsizetype samples, bool holds);

    /// Whether it holds at a sample of the window; nothing where that isn't known.
    [[nodiscard]] std::optional<bool> at(qsizetype sample) const;

    bool operator==(const ConditionTrack &) const = default;
};

/// Samples that follow one another, \a last included.
struct SampleRun
{
    qsizetype first = 0;
    qsizetype last = 0;

    bool operator==(const SampleRun &) const = default;
};

// Words of a track, by themselves.

/// How many words \a samples samples take.
[[nodiscard]] constexpr size_t trackWords(qsizetype samples)
{
    return size_t((samples + 63) / 64);
}
/// The bits of word \a word that are samples of a window of \a samples.
[[nodiscard]] constexpr quint64 windowBits(qsizetype samples, size_t word)
{
    const qsizetype left = samples - qsizetype(word) * 64;
    return left >= 64 ? ~quint64(0) : left <= 0 ? 0 : (quint64(1) << left) - 1;
}
[[nodiscard]] qsizetype setSamples(const std::vector<quint64> &words);
/// The first one set from \a from on, or the last one before \a before.
[[nodiscard]] std::optional<qsizetype> nextSet(const std::vector<quint64> &words, qsizetype from);
[[nodiscard]] std::optional<qsizetype> lastSet(const std::vector<quint64> &words, qsizetype before);
/// The samples that are set, as the runs that they make.
[[nodiscard]] std::vector<SampleRun> setRuns(const std::vector<quint64> &words);

} // namespace KEO
