#pragma once

#include "samplepattern.h"

#include <QBitArray>
#include <QList>

#include <optional>

namespace WaveMonitor {

/// Samples that were found, a bit a sample. Copies share their content.
class SampleHits final
{
public:
    SampleHits() = default;
    /// Bit k of word i is sample 64 i + k.
    explicit SampleHits(QList<quint64> words) : m_words(std::move(words)) {}

    [[nodiscard]] qsizetype count() const;
    /// Hits up to and including \a sample.
    [[nodiscard]] qsizetype countUpTo(qsizetype sample) const;
    /// The first hit after a sample, which may be -1, or the last one before it.
    [[nodiscard]] std::optional<qsizetype> next(qsizetype after) const;
    [[nodiscard]] std::optional<qsizetype> previous(qsizetype before) const;

private:
    QList<quint64> m_words;
};

/// Searches a row, 64 samples at a step. A hit is a sample at which an edge stands, or at which
/// what is looked for begins to be true: a value that stays for long is one hit. The row's value is
/// made of one bit of each member, the most significant first; it has as many samples as its first
/// member, and another member reads as 0 where it has none.
class SampleSearch final
{
public:
    /// The samples are shared. Change also takes the members of several rows together.
    SampleSearch(QList<QBitArray> members, SamplePattern pattern);

    [[nodiscard]] qsizetype samples() const { return m_samples; }
    /// The first hit after a sample, which may be -1, or the last one before it. Looks no further.
    [[nodiscard]] std::optional<qsizetype> next(qsizetype after) const;
    [[nodiscard]] std::optional<qsizetype> previous(qsizetype before) const;
    /// Hits after \a from up to and including \a to.
    [[nodiscard]] qsizetype count(qsizetype from, qsizetype to) const;
    [[nodiscard]] SampleHits all() const;

private:
    /// 64 samples from \a base on. The carry is what held at the sample before.
    [[nodiscard]] quint64 hits(qsizetype base, bool &carry) const;
    [[nodiscard]] bool carryBefore(qsizetype base) const;
    [[nodiscard]] bool isEdge() const { return m_pattern.kind <= SamplePattern::Fall; }
    [[nodiscard]] quint64 valid(qsizetype base) const;
    [[nodiscard]] quint64 edges(qsizetype base) const;
    [[nodiscard]] quint64 matches(qsizetype base) const;
    [[nodiscard]] quint64 valueMatches(qsizetype base) const;
    [[nodiscard]] quint64 rangeMatches(qsizetype base) const;
    [[nodiscard]] quint64 decimalMatches(qsizetype base) const;
    [[nodiscard]] bool hasDigits(const quint64 *words) const;

    QList<QBitArray> m_members;
    SamplePattern m_pattern;
    qsizetype m_samples;
};

} // namespace WaveMonitor
