#include "vcdlines.h"

#include <algorithm>
#include <limits>

namespace KEO {

ChangeLines::ChangeLines(const QList<QByteArray> &identifiers)
{
    m_lines.reserve(size_t(identifiers.size()));
    for (const QByteArray &identifier : identifiers) {
        const QByteArray line = '0' + identifier + '\n';
        Q_ASSERT(line.size() <= kMaximum);
        std::array<char, kMaximum> text{};
        std::copy(line.begin(), line.end(), text.begin());
        m_lines.push_back({qFromLittleEndian<quint64>(text.data()), line.size()});
        m_longest = std::max(m_longest, line.size());
    }
}

GroupTexts::GroupTexts(const ChangeLines &lines)
{
    if (lines.longest() > kLongestLine)
        return;
    m_groups.resize((lines.count() + kSignals - 1) / kSignals);
    for (size_t group = 0; group < m_groups.size(); ++group) {
        const size_t first = group * kSignals;
        const size_t present = std::min(kSignals, lines.count() - first);
        for (unsigned changed = 0; changed < 1U << present; ++changed) {
            for (unsigned levels = changed;; levels = (levels - 1) & changed) {
                m_groups[group][state(changed, levels)] = makeText(lines, first, changed, levels);
                if (levels == 0)
                    break;
            }
        }
    }
}

GroupTexts::Text GroupTexts::makeText(const ChangeLines &lines, size_t first, unsigned changed,
                                      unsigned levels)
{
    std::array<char, kSignals * ChangeLines::kMaximum> bytes{};
    char *to = bytes.data();
    for (size_t i = 0; i < kSignals; ++i) {
        if (changed >> i & 1)
            to = lines.write(to, first + i, levels >> i & 1);
    }
    Text text{.size = quint8(to - bytes.data())};
    std::copy(bytes.data(), to, text.bytes.begin());
    return text;
}

LevelLines::LevelLines(const QList<QByteArray> &identifiers)
    : m_lines(identifiers),
      m_texts(m_lines),
      m_busySize(m_texts.isEmpty() ? std::numeric_limits<qsizetype>::max()
                                   : kFew * m_lines.longest()),
      m_isBusy(size_t(identifiers.size() + 63) / 64)
{
}

} // namespace KEO
