#pragma once

#include <QBitArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <utility>
#include <vector>

namespace WaveMonitor {

class WindowContents;

/// Samples `first` up to but not including `end`; empty if they are equal.
struct SampleRange
{
    qsizetype first = 0;
    qsizetype end = 0;

    [[nodiscard]] qsizetype size() const { return end - first; }
    bool operator==(const SampleRange &other) const = default;
};

/// One signal of two windows, A and B. All sample numbers are those of A.
struct ComparedSignal
{
    QString name; ///< original name
    int idInA = -1;
    int idInB = -1;
    SampleRange compared{}; ///< where both have samples
    /// Samples that have none of the other window beside them, because the signal is longer there
    /// or its trigger stands elsewhere.
    qsizetype onlyInA = 0;
    qsizetype onlyInB = 0;
    std::optional<qsizetype> firstDifference{};
    qsizetype differing = 0; ///< samples that differ
    qsizetype places = 0;    ///< runs of samples that differ, one after the other

    bool operator==(const ComparedSignal &other) const = default;
};

/// What differs in the samples of two windows that are laid side by side so that their triggers
/// meet. Takes what it needs at once and shares the samples, so the windows may change or go.
///
/// Signals meet by their original name, whatever they were renamed to and however the rows are
/// arranged; of several with one name, the first of A by id meets the first of B, and so on.
/// Sample numbers are those of A; that of B is `offset` more.
class WindowComparison final
{
public:
    WindowComparison(const WindowContents &a, const WindowContents &b);

    /// Sample s of A stands beside sample s + offset of B.
    [[nodiscard]] qsizetype offset() const { return m_offset; }
    /// Those that both have, in A's order of ids.
    [[nodiscard]] const QList<ComparedSignal> &compared() const { return m_compared; }
    /// Names of signals without a partner, in order of ids.
    [[nodiscard]] const QStringList &signalsOnlyInA() const { return m_onlyInA; }
    [[nodiscard]] const QStringList &signalsOnlyInB() const { return m_onlyInB; }
    /// The most samples that one signal has without a partner; 0 says that all were compared.
    [[nodiscard]] qsizetype samplesOnlyInA() const;
    [[nodiscard]] qsizetype samplesOnlyInB() const;
    /// Samples from the first to the last one that were compared of any signal; empty without.
    [[nodiscard]] SampleRange comparedSamples() const;
    /// Signals with a sample that differs.
    [[nodiscard]] qsizetype differingSignals() const;
    /// Of all signals.
    [[nodiscard]] std::optional<qsizetype> firstDifference() const;
    /// Do both have the same signals with the same samples as many before and after the trigger?
    /// What has no partner can't be called equal, so anything that is in one window alone says no.
    [[nodiscard]] bool isEqual() const;

    /// The nearest sample after or before \a sample, which may lie outside, where a signal begins
    /// to differ.
    [[nodiscard]] std::optional<qsizetype> nextDifference(qsizetype sample) const;
    [[nodiscard]] std::optional<qsizetype> previousDifference(qsizetype sample) const;

    /// The first run of samples that differ in the signal at position \a signal of compared(),
    /// as far as it lies \a within these samples.
    [[nodiscard]] std::optional<SampleRange> differenceWithin(qsizetype signal,
                                                              SampleRange within) const;

private:
    void matchSignals(const WindowContents &a, const WindowContents &b);
    void compare(qsizetype position);
    [[nodiscard]] quint64 differingBits(qsizetype signal, qsizetype base) const;
    [[nodiscard]] qsizetype firstWithin(qsizetype signal, SampleRange within, quint64 flip) const;

    qsizetype m_offset = 0;
    QList<ComparedSignal> m_compared;
    QList<std::pair<QBitArray, QBitArray>> m_samples; ///< of m_compared, A's and B's, shared
    QStringList m_onlyInA;
    QStringList m_onlyInB;
    std::vector<quint64> m_begins; ///< bit k of word w: a signal begins to differ at 64 * w + k
};

} // namespace WaveMonitor
