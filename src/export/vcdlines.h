#pragma once

#include "decimaltext.h"

#include <QByteArray>
#include <QList>
#include <QtEndian>

#include <array>
#include <bit>
#include <cstring>
#include <vector>

namespace KEO {

// What the lines of a Value Change Dump behind its head are made of.

/// A line or two that follow every time stamp; a copy takes all bytes, so that its size is known
/// to the compiler.
struct ShortText
{
    std::array<char, 8> bytes{};
    qsizetype size = 0;
};

/// Bytes that writeStamp may write.
inline constexpr qsizetype kStampRoom = kDecimalRoom + 2 + qsizetype(sizeof(ShortText::bytes));

inline char *writeShort(char *to, const ShortText &text)
{
    std::memcpy(to, text.bytes.data(), text.bytes.size());
    return to + text.size;
}

/// A time stamp and what stands behind it.
inline char *writeStamp(char *to, qint64 time, const ShortText &behind = {})
{
    *to++ = '#';
    to = writeDecimal(to, time);
    *to++ = '\n';
    return writeShort(to, behind);
}

/// The lines "0<identifier>" and "1<identifier>" of each signal, ready to be copied.
class ChangeLines final
{
public:
    /// A line's greatest size: identifiers have up to six bytes.
    static constexpr int kMaximum = 8;

    explicit ChangeLines(const QList<QByteArray> &identifiers);

    [[nodiscard]] size_t count() const { return m_lines.size(); }
    [[nodiscard]] qsizetype longest() const { return m_longest; }

    /// Needs room for kMaximum bytes.
    char *write(char *to, size_t signal, bool level) const
    {
        const Line &line = m_lines[signal];
        qToLittleEndian(line.text + quint64(level), to); // '0' and '1' are neighbours
        return to + line.size;
    }

private:
    struct Line
    {
        quint64 text = 0; ///< the first character, the level, in the lowest byte
        qsizetype size = 0;
    };
    std::vector<Line> m_lines;
    qsizetype m_longest = 0;
};

/// All lines that four neighbouring signals can have together, for rows in which much changes: a
/// signal stays, falls or rises. None where lines are too long to be kept that way.
class GroupTexts final
{
public:
    static constexpr size_t kSignals = 4;

    explicit GroupTexts(const ChangeLines &lines);

    [[nodiscard]] bool isEmpty() const { return m_groups.empty(); }

    /// The lines of those of the four signals that \a changed has a bit for. Needs room for
    /// kSignals * ChangeLines::kMaximum bytes.
    char *write(char *to, size_t group, unsigned changed, unsigned levels) const
    {
        const Text &text = m_groups[group][state(changed, levels & changed)];
        std::memcpy(to, text.bytes.data(), text.bytes.size());
        return to + text.size;
    }

private:
    static constexpr qsizetype kLongestLine = 4;
    static constexpr size_t kStates = 3 * 3 * 3 * 3;
    struct Text
    {
        std::array<char, kSignals * kLongestLine> bytes{};
        quint8 size = 0;
    };

    /// A digit to base 3 for each signal: 0 stays, 1 falls, 2 rises.
    static size_t state(unsigned changed, unsigned rising)
    {
        constexpr std::array<quint8, 1 << kSignals> places{0,  1,  3,  4,  9,  10, 12, 13,
                                                           27, 28, 30, 31, 36, 37, 39, 40};
        return size_t(places[changed]) + places[rising];
    }

    static Text makeText(const ChangeLines &lines, size_t first, unsigned changed, unsigned levels);

    std::vector<std::array<Text, kStates>> m_groups;
};

/// The lines of many signals of one bit, 64 signals at a time, by whichever way is quicker where
/// much or little changes.
class LevelLines final
{
public:
    /// Bytes that one call of write may write.
    static constexpr qsizetype kRoom = 64 * qsizetype(ChangeLines::kMaximum);

    explicit LevelLines(const QList<QByteArray> &identifiers);

    /// Lines for those of the signals from 64 * \a word on that \a changed has a bit for. Returns
    /// the end of the text.
    char *write(char *to, size_t word, quint64 changed, quint64 levels)
    {
        const char *begin = to;
        if (m_isBusy[word]) {
            constexpr unsigned four = (1U << GroupTexts::kSignals) - 1;
            size_t group = word * (64 / GroupTexts::kSignals);
            for (; changed != 0; changed >>= GroupTexts::kSignals, ++group) {
                to = m_texts.write(to, group, unsigned(changed) & four, unsigned(levels) & four);
                levels >>= GroupTexts::kSignals;
            }
        } else {
            for (; changed != 0; changed &= changed - 1) {
                const int bit = std::countr_zero(changed);
                to = m_lines.write(to, word * 64 + size_t(bit), levels >> bit & 1);
            }
        }
        m_isBusy[word] = to - begin > m_busySize;
        return to;
    }

private:
    static constexpr qsizetype kFew = 8; ///< signals of 64: one by one is quicker then

    ChangeLines m_lines;
    GroupTexts m_texts;
    qsizetype m_busySize;         ///< what more than a few lines take
    std::vector<quint8> m_isBusy; ///< for each word: the next row is taken to have as many changes
};

} // namespace KEO
