#pragma once

#include <QBitArray>

#include <vector>

namespace Sim {

/// The comparator and the counter of one match unit, set through its registers. A port's bits are
/// numbers with the first signal most significant; rows are packed like those of BitMatrix.
///
/// Functions 0 and 1 (equal, not equal) test each bit as its compare, mask and edge bits say:
///
///     edge 0: mask 0 any level                 mask 1 the level of the compare bit
///     edge 1: mask 0, compare 0 rising         mask 0, compare 1 falling
///             mask 1, compare 0 either edge    mask 1, compare 1 no edge
///
/// Functions 2 to 7 are orders of numbers; lower bounds stand in the compare register and upper
/// bounds in the mask register: > compare, < mask, >= compare, <= mask, in range, not in range
/// (ranges with both ends).
class MatchUnit final
{
public:
    explicit MatchUnit(int portWidth = 0);

    /// \a field is a whole register; the port's bits are its last ones.
    void setCompare(const QBitArray &field) { m_compare = packed(field); }
    void setMask(const QBitArray &field) { m_mask = packed(field); }
    void setEdge(const QBitArray &field) { m_edge = packed(field); }
    /// Control: the last four bits are continuous, then the function's three bits.
    void setControl(const QBitArray &field);
    /// Load value of the counter: the hits to count, minus 1.
    void setCounter(const QBitArray &field);

    /// Whether a sample matches. \a before is the sample before it.
    [[nodiscard]] bool hits(const quint64 *now, const quint64 *before) const;

    /// Takes the next sample's comparison and says what the unit reports for it: hits in a row when
    /// the counter is continuous, else hits in all, have reached the count. A report of hits in all
    /// stays until the counter starts again, so that a unit that has seen its hits can be combined
    /// with one that matches later.
    bool count(bool hit);
    void restartCounter() { m_counted = 0; }
    [[nodiscard]] quint32 counted() const { return m_counted; }

private:
    [[nodiscard]] std::vector<quint64> packed(const QBitArray &field) const;
    [[nodiscard]] bool equals(const quint64 *now, const quint64 *before) const;

    int m_width = 0;
    std::vector<quint64> m_compare;
    std::vector<quint64> m_mask;
    std::vector<quint64> m_edge;
    int m_function = 0;
    bool m_continuous = false;
    quint32 m_wanted = 1;
    quint32 m_counted = 0; ///< stops at m_wanted
};

} // namespace Sim
