#include "tabletracks.h"

#include <base/bitwords.h>

#include <QtGlobal>

#include <algorithm>
#include <bit>
#include <unordered_map>
#include <utility>

namespace KEO {

namespace {

constexpr size_t kGroup = 32; // tables that are looked up together, one bit each

/// Answers of the tables of a group, bit t is table t.
using Answers = quint32;

struct Possible
{
    Answers canHold = 0;
    Answers canFail = 0;
};

/// The answers of some tables by input number.
std::vector<Answers> answersByInput(std::span<const TruthTable *const> tables)
{
    const size_t inputs = tables.front()->size();
    std::vector<Answers> answers(inputs);
    BitSquare square;
    for (size_t first = 0; first < inputs; first += 64) {
        square.fill(0);
        for (size_t table = 0; table < tables.size(); ++table)
            square[table] = tables[table]->words[first / 64];
        transposeBits(square);
        for (size_t i = 0; i < std::min<size_t>(64, inputs - first); ++i)
            answers[first + i] = Answers(square[i]);
    }
    return answers;
}

/// The bits of \a value at which \a places has a bit, moved together.
quint32 packedBits(quint32 value, quint32 places)
{
    quint32 packed = 0;
    for (int to = 0; places != 0; places &= places - 1, ++to)
        packed |= ((value >> std::countr_zero(places)) & 1) << to;
    return packed;
}

/// The answers with certain inputs unknown, by the other inputs moved together. Samples that lack
/// the same inputs come by the thousand, so once looking at each state of those has cost as much as
/// doing it for the whole table, the whole table it is.
class UnknownInputs final
{
public:
    UnknownInputs(const std::vector<Answers> &answers, quint32 unknown)
        : m_answers(answers), m_unknown(unknown)
    {
    }

    /// \a input has the unknown inputs clear.
    Possible at(quint32 input)
    {
        if (m_whole.empty()) {
            m_spent += size_t(1) << std::popcount(m_unknown);
            if (m_spent <= m_answers.size())
                return lookThrough(input);
            fold();
        }
        return m_whole[packedBits(input, quint32(m_answers.size() - 1) & ~m_unknown)];
    }

private:
    [[nodiscard]] Possible lookThrough(quint32 input) const
    {
        Possible possible;
        for (quint32 state = m_unknown;; state = (state - 1) & m_unknown) {
            possible.canHold |= m_answers[input | state];
            possible.canFail |= ~m_answers[input | state];
            if (state == 0)
                return possible;
        }
    }

    void fold()
    {
        m_whole.reserve(m_answers.size());
        for (const Answers answers : m_answers)
            m_whole.push_back({answers, ~answers});
        for (quint32 left = m_unknown; left != 0; left &= ~std::bit_floor(left)) {
            const size_t run = std::bit_floor(left);
            size_t to = 0;
            for (size_t from = 0; from < m_whole.size(); from += 2 * run) {
                for (size_t i = from; i < from + run; ++i, ++to)
                    m_whole[to] = {m_whole[i].canHold | m_whole[i + run].canHold,
                                   m_whole[i].canFail | m_whole[i + run].canFail};
            }
            m_whole.resize(to);
        }
        m_whole.shrink_to_fit();
    }

    const std::vector<Answers> &m_answers;
    quint32 m_unknown;
    size_t m_spent = 0;
    std::vector<Possible> m_whole;
};

/// Looks the samples of a group of tables up, 64 at a time.
class TableGroup final
{
public:
    explicit TableGroup(std::span<const TruthTable *const> tables)
        : m_answers(answersByInput(tables))
    {
    }

    /// \a known and \a holds: a word of each input; both become a word of each table's answers.
    void answer(BitSquare &known, BitSquare &holds)
    {
        const size_t inputs = std::bit_width(m_answers.size()) - 1;
        const bool isAllKnown = std::all_of(known.begin(), known.begin() + qsizetype(inputs),
                                            [](quint64 word) { return ~word == 0; });
        transposeBits(holds);
        if (isAllKnown) {
            for (quint64 &sample : holds)
                sample = m_answers[sample];
            known.fill(~quint64(0));
        } else {
            transposeBits(known);
            for (size_t i = 0; i < known.size(); ++i) {
                const Possible possible = at(quint32(known[i]), quint32(holds[i]));
                known[i] = possible.canHold ^ possible.canFail;
                holds[i] = possible.canHold & ~possible.canFail;
            }
            transposeBits(known);
        }
        transposeBits(holds);
    }

private:
    Possible at(quint32 known, quint32 input)
    {
        const quint32 unknown = quint32(m_answers.size() - 1) & ~known;
        if (unknown == 0)
            return {m_answers[input], ~m_answers[input]};
        if (!m_last || m_lastUnknown != unknown) {
            auto found = m_unknown.find(unknown);
            if (found == m_unknown.end())
                found = m_unknown.emplace(unknown, UnknownInputs(m_answers, unknown)).first;
            m_last = &found->second;
            m_lastUnknown = unknown;
        }
        return m_last->at(input);
    }

    std::vector<Answers> m_answers;
    std::unordered_map<quint32, UnknownInputs> m_unknown; ///< elements stay where they are
    UnknownInputs *m_last = nullptr;
    quint32 m_lastUnknown = 0;
};

} // namespace

std::vector<ConditionTrack> tableTracks(std::span<const TruthTable *const> tables,
                                        const std::vector<ConditionTrack> &inputs,
                                        qsizetype samples)
{
    std::vector<ConditionTrack> tracks(tables.size(), ConditionTrack::unknown(samples));
    for (size_t first = 0; first < tables.size(); first += kGroup) {
        const size_t count = std::min(kGroup, tables.size() - first);
        TableGroup group(tables.subspan(first, count));
        for (size_t word = 0; word < trackWords(samples); ++word) {
            const quint64 inside = windowBits(samples, word);
            BitSquare known{};
            BitSquare holds{};
            for (size_t input = 0; input < inputs.size(); ++input) {
                known[input] = inputs[input].known[word] | ~inside;
                holds[input] = inputs[input].holds[word];
            }
            group.answer(known, holds);
            for (size_t table = 0; table < count; ++table) {
                tracks[first + table].known[word] = known[table] & inside;
                tracks[first + table].holds[word] = holds[table] & inside;
            }
        }
    }
    return tracks;
}

} // namespace KEO
