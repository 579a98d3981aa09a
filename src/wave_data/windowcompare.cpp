#include "windowcompare.h"

#include "windowcontents.h"

#include <base/bitwords.h>

#include <QHash>

#include <algorithm>
#include <bit>
#include <limits>

namespace WaveMonitor {

namespace {

constexpr qsizetype kWord = 64;
constexpr quint64 kAllBits = ~quint64(0);

/// 64 bits of \a bits from any index on, also one before the start. Bits outside read as 0.
quint64 bitsFrom(const QBitArray &bits, qsizetype first)
{
    if (first < 0)
        return first <= -kWord ? 0 : KEO::bitWord(bits, 0) << -first;
    const qsizetype byte = first / 8 * 8;
    const int shift = int(first - byte);
    const quint64 low = KEO::bitWord(bits, byte) >> shift;
    return shift == 0 ? low : low | KEO::bitWord(bits, byte + kWord) << (kWord - shift);
}

/// The bits of the word at \a base that stand for samples of \a range.
quint64 maskOf(SampleRange range, qsizetype base)
{
    const qsizetype first = std::clamp<qsizetype>(range.first - base, 0, kWord);
    const qsizetype end = std::clamp<qsizetype>(range.end - base, 0, kWord);
    if (first >= end)
        return 0;
    return (kAllBits << first) & (kAllBits >> (kWord - end));
}

constexpr qsizetype wordBase(qsizetype sample)
{
    return sample / kWord * kWord;
}

template <typename Member>
qsizetype largest(const QList<ComparedSignal> &compared, Member member)
{
    qsizetype most = 0;
    for (const ComparedSignal &signal : compared)
        most = std::max(most, signal.*member);
    return most;
}

} // namespace

WindowComparison::WindowComparison(const WindowContents &a, const WindowContents &b)
    : m_offset(qsizetype(b.triggerPosition()) - a.triggerPosition())
{
    matchSignals(a, b);
    for (qsizetype position = 0; position < m_compared.size(); ++position)
        compare(position);
}

void WindowComparison::matchSignals(const WindowContents &a, const WindowContents &b)
{
    QHash<QString, QList<const SignalElement *>> waiting; // of B, by name, in order of ids
    for (const SignalElement &signal : b.signalMap())
        waiting[signal.name].append(&signal);
    for (const SignalElement &signal : a.signalMap()) {
        const auto found = waiting.find(signal.name);
        if (found == waiting.end() || found->isEmpty()) {
            m_onlyInA.append(signal.name);
            continue;
        }
        const SignalElement *partner = found->takeFirst();
        m_compared.append({.name = signal.name, .idInA = signal.id, .idInB = partner->id});
        m_samples.append({signal.data, partner->data});
    }
    for (const SignalElement &signal : b.signalMap()) {
        if (waiting.value(signal.name).contains(&signal))
            m_onlyInB.append(signal.name);
    }
}

void WindowComparison::compare(qsizetype position)
{
    ComparedSignal &signal = m_compared[position];
    const auto &[a, b] = m_samples.at(position);
    const qsizetype first = std::max<qsizetype>(0, -m_offset);
    const qsizetype end = std::min(a.size(), b.size() - m_offset);
    if (first < end)
        signal.compared = {first, end};
    signal.onlyInA = a.size() - signal.compared.size();
    signal.onlyInB = b.size() - signal.compared.size();
    const size_t words = size_t((signal.compared.end + kWord - 1) / kWord);
    m_begins.resize(std::max(m_begins.size(), words));
    quint64 before = 0; // does the sample before the word differ?
    for (qsizetype base = wordBase(first); base < end; base += kWord) {
        const quint64 differing = differingBits(position, base);
        const quint64 begins = differing & ~(differing << 1 | before);
        before = differing >> (kWord - 1);
        if (differing == 0)
            continue;
        if (!signal.firstDifference)
            signal.firstDifference = base + std::countr_zero(differing);
        signal.differing += std::popcount(differing);
        signal.places += std::popcount(begins);
        m_begins[size_t(base / kWord)] |= begins;
    }
}

/// Bit k is set if both have sample \a base + k and differ there.
quint64 WindowComparison::differingBits(qsizetype signal, qsizetype base) const
{
    const auto &[a, b] = m_samples.at(signal);
    return (KEO::bitWord(a, base) ^ bitsFrom(b, base + m_offset)) &
           maskOf(m_compared.at(signal).compared, base);
}

qsizetype WindowComparison::samplesOnlyInA() const
{
    return largest(m_compared, &ComparedSignal::onlyInA);
}

qsizetype WindowComparison::samplesOnlyInB() const
{
    return largest(m_compared, &ComparedSignal::onlyInB);
}

SampleRange WindowComparison::comparedSamples() const
{
    SampleRange all;
    for (const ComparedSignal &signal : m_compared) {
        if (signal.compared.size() == 0)
            continue;
        all.first = signal.compared.first; // the same for all
        all.end = std::max(all.end, signal.compared.end);
    }
    return all;
}

qsizetype WindowComparison::differingSignals() const
{
    return std::ranges::count_if(m_compared,
                                 [](const ComparedSignal &signal) { return signal.differing > 0; });
}

std::optional<qsizetype> WindowComparison::firstDifference() const
{
    return nextDifference(-1);
}

bool WindowComparison::isEqual() const
{
    return m_onlyInA.isEmpty() && m_onlyInB.isEmpty() && samplesOnlyInA() == 0 &&
           samplesOnlyInB() == 0 && differingSignals() == 0;
}

std::optional<qsizetype> WindowComparison::nextDifference(qsizetype sample) const
{
    const qsizetype from = std::max<qsizetype>(0, sample + 1);
    for (size_t word = size_t(from / kWord); word < m_begins.size(); ++word) {
        const qsizetype base = qsizetype(word) * kWord;
        const quint64 bits =
            m_begins[word] & maskOf({from, std::numeric_limits<qsizetype>::max()}, base);
        if (bits != 0)
            return base + std::countr_zero(bits);
    }
    return {};
}

std::optional<qsizetype> WindowComparison::previousDifference(qsizetype sample) const
{
    const qsizetype end = std::min(sample, qsizetype(m_begins.size()) * kWord);
    for (qsizetype base = wordBase(end - 1); base >= 0 && end > 0; base -= kWord) {
        const quint64 bits = m_begins[size_t(base / kWord)] & maskOf({0, end}, base);
        if (bits != 0)
            return base + std::bit_width(bits) - 1;
    }
    return {};
}

std::optional<SampleRange> WindowComparison::differenceWithin(qsizetype signal,
                                                              SampleRange within) const
{
    const SampleRange compared = m_compared.at(signal).compared;
    const SampleRange both{std::max(within.first, compared.first),
                           std::min(within.end, compared.end)};
    const qsizetype first = firstWithin(signal, both, 0);
    if (first >= both.end)
        return {};
    return SampleRange{first, firstWithin(signal, {first, both.end}, kAllBits)};
}

/// The first sample that differs or, with all bits set in \a flip, is equal; the end without one.
qsizetype WindowComparison::firstWithin(qsizetype signal, SampleRange within, quint64 flip) const
{
    for (qsizetype base = wordBase(within.first); base < within.end; base += kWord) {
        const quint64 bits = (differingBits(signal, base) ^ flip) & maskOf(within, base);
        if (bits != 0)
            return base + std::countr_zero(bits);
    }
    return within.end;
}

} // namespace WaveMonitor
