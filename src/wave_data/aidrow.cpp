#include "aidrow.h"

#include <algorithm>
#include <cmath>

namespace WaveMonitor {

namespace {

constexpr int kBits = 64;

quint64 wordAt(const std::vector<quint64> &words, qsizetype index)
{
    return index >= 0 && size_t(index) < words.size() ? words[size_t(index)] : 0;
}

AidColumn columnOf(const AidRow &row, qsizetype from, qsizetype end)
{
    AidColumn column;
    for (qsizetype word = from / kBits; word * kBits < end; ++word) {
        quint64 asked = ~quint64(0);
        if (word == from / kBits)
            asked &= ~quint64(0) << from % kBits;
        if (end - word * kBits < kBits)
            asked &= (quint64(1) << (end - word * kBits)) - 1;
        const quint64 known = wordAt(row.known, word);
        const quint64 holds = wordAt(row.holds, word);
        column.isUnknown |= (~known & asked) != 0;
        column.fails |= (known & ~holds & asked) != 0;
        column.holds |= (holds & asked) != 0;
    }
    return column;
}

} // namespace

AidLevel aidLevel(const AidRow &row, qsizetype sample)
{
    const quint64 bit = quint64(1) << sample % kBits;
    if (!(wordAt(row.known, sample / kBits) & bit))
        return AidLevel::Unknown;
    return wordAt(row.holds, sample / kBits) & bit ? AidLevel::Holds : AidLevel::Fails;
}

std::vector<AidColumn> aidColumns(const AidRow &row, qsizetype samples, qreal left, qreal pitch,
                                  int columns)
{
    std::vector<AidColumn> all(size_t(std::max(columns, 0)));
    for (size_t column = 0; column < all.size(); ++column) {
        const qreal x = qreal(column) - left;
        const auto from = std::max(qsizetype(std::floor((x - 0.5) / pitch)), qsizetype(0));
        const auto end = std::min(qsizetype(std::ceil((x + 0.5) / pitch)), samples);
        if (from < end)
            all[column] = columnOf(row, from, end);
    }
    return all;
}

QList<quint64> aidBeginnings(const AidRow &row)
{
    QList<quint64> words(qsizetype(row.holds.size()));
    quint64 before = 0;
    for (size_t word = 0; word < row.holds.size(); ++word) {
        const quint64 holds = row.holds[word];
        words[qsizetype(word)] = holds & ~(holds << 1 | before);
        before = holds >> (kBits - 1);
    }
    return words;
}

} // namespace WaveMonitor
