#include "samplesearch.h"

#include "radixtext.h"
#include "samplechanges.h"

#include <base/bitwords.h>

#include <QVarLengthArray>

#include <algorithm>
#include <bit>
#include <utility>
#include <vector>

namespace WaveMonitor {

namespace {

constexpr qsizetype kWord = 64;
constexpr quint64 kAll = ~quint64(0);

/// Bits \a first and up.
quint64 bitsFrom(qsizetype first)
{
    return first < kWord ? kAll << first : 0;
}

/// Which of 64 values lie above and which below a limit, a bit of them at a time.
struct Order
{
    quint64 equal = kAll;
    quint64 above = 0;

    void look(quint64 bits, bool limit)
    {
        if (!limit)
            above |= equal & bits;
        equal &= limit ? bits : ~bits;
    }
    [[nodiscard]] quint64 below() const { return ~(equal | above); }
};

} // namespace

qsizetype SampleHits::count() const
{
    return countUpTo(m_words.size() * kWord);
}

qsizetype SampleHits::countUpTo(qsizetype sample) const
{
    const qsizetype end = std::clamp<qsizetype>(sample + 1, 0, m_words.size() * kWord);
    qsizetype count = 0;
    for (qsizetype i = 0; i < end / kWord; ++i)
        count += std::popcount(m_words[i]);
    if (const qsizetype rest = end % kWord)
        count += std::popcount(m_words[end / kWord] & ~bitsFrom(rest));
    return count;
}

std::optional<qsizetype> SampleHits::next(qsizetype after) const
{
    const qsizetype from = std::max<qsizetype>(after + 1, 0);
    quint64 mask = bitsFrom(from % kWord);
    for (qsizetype i = from / kWord; i < m_words.size(); ++i, mask = kAll) {
        if (const quint64 word = m_words[i] & mask)
            return i * kWord + std::countr_zero(word);
    }
    return {};
}

std::optional<qsizetype> SampleHits::previous(qsizetype before) const
{
    const qsizetype end = std::clamp<qsizetype>(before, 0, m_words.size() * kWord);
    quint64 mask = ~bitsFrom(end % kWord);
    for (qsizetype i = end / kWord; i >= 0; --i, mask = kAll) {
        const quint64 word = mask ? m_words[i] & mask : 0;
        if (word)
            return i * kWord + kWord - 1 - std::countl_zero(word);
    }
    return {};
}

SampleSearch::SampleSearch(QList<QBitArray> members, SamplePattern pattern)
    : m_members(std::move(members)), m_pattern(std::move(pattern)), m_samples(0)
{
    if (m_members.isEmpty())
        return;
    m_samples = m_members.first().size();
    if (m_pattern.kind != SamplePattern::Change)
        return;
    for (const QBitArray &member : std::as_const(m_members))
        m_samples = std::max(m_samples, member.size());
}

std::optional<qsizetype> SampleSearch::next(qsizetype after) const
{
    const qsizetype from = std::max<qsizetype>(after + 1, 0);
    qsizetype base = from / kWord * kWord;
    bool carry = carryBefore(base);
    quint64 mask = bitsFrom(from % kWord);
    for (; base < m_samples; base += kWord, mask = kAll) {
        if (const quint64 word = hits(base, carry) & mask)
            return base + std::countr_zero(word);
    }
    return {};
}

std::optional<qsizetype> SampleSearch::previous(qsizetype before) const
{
    const qsizetype end = std::clamp<qsizetype>(before, 0, m_samples);
    quint64 mask = ~bitsFrom(end % kWord);
    for (qsizetype base = end / kWord * kWord; base >= 0; base -= kWord, mask = kAll) {
        bool carry = carryBefore(base);
        if (const quint64 word = hits(base, carry) & mask)
            return base + kWord - 1 - std::countl_zero(word);
    }
    return {};
}

qsizetype SampleSearch::count(qsizetype from, qsizetype to) const
{
    const qsizetype first = std::max<qsizetype>(from + 1, 0);
    const qsizetype end = std::min(to + 1, m_samples);
    qsizetype base = first / kWord * kWord;
    bool carry = carryBefore(base);
    quint64 mask = bitsFrom(first % kWord);
    qsizetype count = 0;
    for (; base < end; base += kWord, mask = kAll) {
        if (end - base < kWord)
            mask &= ~bitsFrom(end - base);
        count += std::popcount(hits(base, carry) & mask);
    }
    return count;
}

SampleHits SampleSearch::all() const
{
    QList<quint64> words;
    words.reserve((m_samples + kWord - 1) / kWord);
    bool carry = false;
    for (qsizetype base = 0; base < m_samples; base += kWord)
        words.append(hits(base, carry));
    return SampleHits(std::move(words));
}

bool SampleSearch::carryBefore(qsizetype base) const
{
    return base > 0 && !isEdge() && matches(base - kWord) >> (kWord - 1);
}

quint64 SampleSearch::hits(qsizetype base, bool &carry) const
{
    if (isEdge())
        return edges(base) & valid(base);
    const quint64 word = matches(base);
    const quint64 starts = word & ~(word << 1 | quint64(carry));
    carry = word >> (kWord - 1);
    return starts;
}

quint64 SampleSearch::valid(qsizetype base) const
{
    return base >= m_samples ? 0 : ~bitsFrom(m_samples - base);
}

quint64 SampleSearch::edges(qsizetype base) const
{
    const quint64 changes = changesFrom({m_members.constData(), size_t(m_members.size())}, base);
    if (m_pattern.kind == SamplePattern::Change || m_members.isEmpty())
        return changes;
    const quint64 level = KEO::bitWord(m_members.first(), base);
    return changes & (m_pattern.kind == SamplePattern::Rise ? level : ~level);
}

quint64 SampleSearch::matches(qsizetype base) const
{
    quint64 found = 0;
    if (m_pattern.kind == SamplePattern::Value)
        found = valueMatches(base);
    else if (m_pattern.kind == SamplePattern::Range)
        found = rangeMatches(base);
    else
        found = decimalMatches(base);
    return (m_pattern.isNegated ? ~found : found) & valid(base);
}

quint64 SampleSearch::valueMatches(qsizetype base) const
{
    quint64 found = kAll;
    for (qsizetype i = 0; i < m_members.size() && found; ++i) {
        if (!m_pattern.known.testBit(i))
            continue;
        const quint64 bits = KEO::bitWord(m_members[i], base);
        found &= m_pattern.low.testBit(i) ? bits : ~bits;
    }
    return found;
}

quint64 SampleSearch::rangeMatches(qsizetype base) const
{
    Order low;
    Order high;
    for (qsizetype i = 0; i < m_members.size() && (low.equal | high.equal); ++i) {
        // Numbers with a sign have the order of numbers without one if the sign's bit is inverted.
        const bool flips = m_pattern.isSigned && i == 0;
        const quint64 bits = KEO::bitWord(m_members[i], base) ^ (flips ? kAll : 0);
        low.look(bits, m_pattern.low.testBit(i) != flips);
        high.look(bits, m_pattern.high.testBit(i) != flips);
    }
    return ~low.below() & ~high.above;
}

/// No bits tell a digit in the middle of a decimal number, so this reads the texts.
quint64 SampleSearch::decimalMatches(qsizetype base) const
{
    const quint64 candidates = rangeMatches(base) & valid(base);
    if (candidates == 0)
        return 0;
    const qsizetype bits = m_members.size();
    const qsizetype wordCount = (bits + kWord - 1) / kWord;
    std::vector<KEO::BitSquare> squares(size_t(wordCount), KEO::BitSquare{});
    for (qsizetype i = 0; i < bits; ++i) {
        const qsizetype weight = bits - 1 - i;
        squares[size_t(weight / kWord)][size_t(weight % kWord)] = KEO::bitWord(m_members[i], base);
    }
    for (KEO::BitSquare &square : squares)
        KEO::transposeBits(square);
    const quint64 changes = changesFrom({m_members.constData(), size_t(bits)}, base);
    QVarLengthArray<quint64, 16> value(wordCount);
    quint64 found = 0;
    bool last = false;
    quint64 isNew = kAll;
    for (quint64 left = candidates; left; left &= left - 1) {
        const int k = std::countr_zero(left);
        if (isNew & ~bitsFrom(k + 1)) {
            for (qsizetype word = 0; word < wordCount; ++word)
                value[word] = squares[size_t(word)][size_t(k)];
            last = hasDigits(value.constData());
            isNew = changes & bitsFrom(k + 1);
        }
        found |= quint64(last) << k;
    }
    return found;
}

bool SampleSearch::hasDigits(const quint64 *words) const
{
    const qsizetype bits = m_members.size();
    QVarLengthArray<char, 256> text(radixTextCapacity(bits));
    const auto type = m_pattern.isSigned ? DataFormat::SignedDecimal : DataFormat::UnsignedDecimal;
    const qsizetype length = radixText(type, words, bits, text.data());
    const bool isMinus = text[0] == '-';
    const bool wantsMinus = m_pattern.digits.startsWith('-');
    if (isMinus != wantsMinus)
        return false;
    const qsizetype sign = isMinus;
    qsizetype place = m_pattern.digits.size() - (length - sign);
    if (place < sign)
        return false; // more digits than are looked for
    for (qsizetype i = sign; i < place; ++i) {
        if (m_pattern.digits[i] != '0' && m_pattern.digits[i] != 'X')
            return false;
    }
    for (qsizetype i = sign; i < length; ++i, ++place) {
        if (m_pattern.digits[place] != 'X' && m_pattern.digits[place] != text[i])
            return false;
    }
    return true;
}

} // namespace WaveMonitor
