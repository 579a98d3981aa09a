#include "layoutcarry.h"

#include "windowcontents.h"

#include <QCoreApplication>

#include <algorithm>
#include <optional>
#include <utility>

namespace WaveMonitor {

using KEO::CarryOutcome;

namespace {

using Rows = std::vector<RowRecord>;

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(WaveMonitor::LayoutCarry)
};

template <typename Visit>
void forEachSignal(const RowRecord &row, Visit visit)
{
    if (row.type == LayoutNode::Signal)
        visit(row);
    for (const RowRecord &member : row.members)
        forEachSignal(member, visit);
}

QSet<int> signalsOf(const RowRecord &row)
{
    QSet<int> ids;
    forEachSignal(row, [&ids](const RowRecord &signal) { ids.insert(signal.id); });
    return ids;
}

/// \a rows without the signals \a ids, and without buses that have no others.
Rows without(const Rows &rows, const QSet<int> &ids)
{
    Rows left;
    for (const RowRecord &row : rows) {
        if (row.type == LayoutNode::Signal && ids.contains(row.id))
            continue;
        RowRecord copy = row;
        copy.members = without(row.members, ids);
        if (row.members.empty() || !copy.members.empty())
            left.push_back(std::move(copy));
    }
    return left;
}

/// Do both show the same in the same places? How it looks may differ.
bool showSame(const Rows &a, const Rows &b)
{
    return std::ranges::equal(a, b, [](const RowRecord &x, const RowRecord &y) {
        return x.type == y.type && x.id == y.id && x.name == y.name &&
               showSame(x.members, y.members);
    });
}

/// One window on its way. A bus of the old description is told by its position there.
class Carrier
{
public:
    Carrier(const Arrangement &before, const WindowContents &was, const WindowContents &is,
            const QHash<int, int> &ids, QString place);

    ArrangementCarry carry();

private:
    [[nodiscard]] std::optional<size_t> describedBus(const RowRecord &row) const;
    [[nodiscard]] const RowRecord *successorOf(const RowRecord &row) const;
    void findSuccessors();
    [[nodiscard]] std::optional<RowRecord> converted(const RowRecord &row) const;
    void copyLook(const RowRecord &from, RowRecord &to) const;
    void takeNewOrder();
    void keepOldOrder();
    void addNewMembers(const RowRecord &described);
    void tellRows(const Rows &rows, const QString &hidden);
    void tellOrder();
    [[nodiscard]] QStringList traitsOf(const RowRecord &row) const;
    [[nodiscard]] QString nameOf(const RowRecord &row) const;
    void tell(CarryOutcome outcome, const QString &setting, const QStringList &traits,
              const QString &reason = {});

    const Arrangement &m_before;
    const WindowContents &m_wasContents;
    const QHash<int, int> &m_ids;
    const QString m_place;
    const Rows m_was;
    const Rows m_is;
    QSet<int> m_newIds;
    QHash<size_t, size_t> m_successors; ///< from a bus in m_was to one in m_is
    bool m_isOrdered = false;           ///< by the user
    ArrangementCarry m_carry;
};

Carrier::Carrier(const Arrangement &before, const WindowContents &was, const WindowContents &is,
                 const QHash<int, int> &ids, QString place)
    : m_before(before),
      m_wasContents(was),
      m_ids(ids),
      m_place(std::move(place)),
      m_was(was.snapshot().rows),
      m_is(is.snapshot().rows)
{
    const QList<int> all = is.signalMap().keys();
    m_newIds = QSet<int>(all.begin(), all.end());
    for (const int id : ids)
        m_newIds.remove(id);
    findSuccessors();
}

/// A bus has become the one that holds most of its signals, even if it has another name, as a bus
/// of another width has; or the one of its name.
void Carrier::findSuccessors()
{
    QSet<size_t> taken;
    for (const bool byName : {false, true}) {
        for (size_t old = 0; old < m_was.size(); ++old) {
            if (m_was[old].type != LayoutNode::Bus || m_successors.contains(old))
                continue;
            QSet<int> moved;
            for (const int id : signalsOf(m_was[old]))
                moved.insert(m_ids.value(id, -1));
            std::optional<size_t> best;
            qsizetype most = 0;
            for (size_t now = 0; now < m_is.size(); ++now) {
                if (m_is[now].type != LayoutNode::Bus || taken.contains(now))
                    continue;
                const qsizetype shared = byName ? m_is[now].name == m_was[old].name
                                                : signalsOf(m_is[now]).intersect(moved).size();
                if (shared > most) {
                    most = shared;
                    best = now;
                }
            }
            if (best) {
                m_successors.insert(old, *best);
                taken.insert(*best);
            }
        }
    }
}

/// The bus of the old description that \a row is, if it is one.
std::optional<size_t> Carrier::describedBus(const RowRecord &row) const
{
    if (row.type != LayoutNode::Bus)
        return {};
    std::optional<size_t> found;
    for (size_t old = 0; old < m_was.size(); ++old) {
        if (m_was[old].type != LayoutNode::Bus || m_was[old].name != row.name)
            continue;
        if (!found || signalsOf(m_was[old]).intersects(signalsOf(row)))
            found = old;
    }
    return found;
}

const RowRecord *Carrier::successorOf(const RowRecord &row) const
{
    const std::optional<size_t> described = describedBus(row);
    const auto found = described ? m_successors.constFind(*described) : m_successors.constEnd();
    return found == m_successors.constEnd() ? nullptr : &m_is[*found];
}

/// What the user made of a row; the rest of \a to is the new description's.
void Carrier::copyLook(const RowRecord &from, RowRecord &to) const
{
    const std::optional<size_t> described = describedBus(from);
    if (from.text != (described ? m_was[*described].text : QString()))
        to.text = from.text;
    to.color = from.color;
    to.format = from.format;
}

/// \a row with what became of its signals; nothing if none is left.
std::optional<RowRecord> Carrier::converted(const RowRecord &row) const
{
    RowRecord copy = row;
    if (row.type == LayoutNode::Signal) {
        copy.id = m_ids.value(row.id, -1);
        return copy.id < 0 ? std::nullopt : std::optional(copy);
    }
    copy.members.clear();
    for (const RowRecord &member : row.members) {
        if (auto moved = converted(member))
            copy.members.push_back(*std::move(moved));
    }
    if (copy.members.empty() && !row.members.empty())
        return {};
    if (const RowRecord *successor = successorOf(row)) {
        copy.name = successor->name;
        copy.text = successor->text;
        copyLook(row, copy);
    }
    return copy;
}

ArrangementCarry Carrier::carry()
{
    QSet<int> hidden;
    Rows hiddenRows;
    for (const HiddenRow &each : m_before.hidden) {
        hidden += signalsOf(each.row);
        hiddenRows.push_back(each.row);
        HiddenRow copy = each;
        if (auto row = converted(each.row)) {
            copy.row = *std::move(row);
            m_carry.arrangement.hidden.push_back(std::move(copy));
        }
    }
    m_isOrdered = !showSame(m_before.rows, without(m_was, hidden));
    if (m_isOrdered)
        keepOldOrder();
    else
        takeNewOrder();
    tellRows(m_before.rows, {});
    tellRows(hiddenRows, Text::tr("hidden"));
    if (m_isOrdered)
        tellOrder();
    return std::move(m_carry);
}

void Carrier::takeNewOrder()
{
    QSet<int> hidden;
    for (const HiddenRow &each : m_carry.arrangement.hidden)
        hidden += signalsOf(each.row);
    Rows &rows = m_carry.arrangement.rows;
    rows = without(m_is, hidden);
    QHash<int, const RowRecord *> looks;                // by new id
    QHash<LayoutNode::Key, const RowRecord *> busLooks; // by the key of the new bus
    for (const RowRecord &row : m_before.rows) {
        forEachSignal(row, [&](const RowRecord &signal) {
            looks.insert(m_ids.value(signal.id, -1), &signal);
        });
        if (const RowRecord *successor = successorOf(row))
            busLooks.insert(successor->key, &row);
    }
    const auto dress = [&](auto &self, RowRecord &row) -> void {
        const RowRecord *look =
            row.type == LayoutNode::Bus ? busLooks.value(row.key) : looks.value(row.id);
        if (look)
            copyLook(*look, row);
        if (look && m_before.open.contains(look->key))
            m_carry.arrangement.open.insert(row.key);
        for (RowRecord &member : row.members)
            self(self, member);
    };
    for (RowRecord &row : rows)
        dress(dress, row);
}

void Carrier::keepOldOrder()
{
    Arrangement &arrangement = m_carry.arrangement;
    for (const RowRecord &row : m_before.rows) {
        if (auto moved = converted(row))
            arrangement.rows.push_back(*std::move(moved));
    }
    arrangement.open = m_before.open;
    for (const RowRecord &row : m_is) {
        if (row.type == LayoutNode::Bus)
            addNewMembers(row);
        else if (m_newIds.contains(row.id))
            insertById(arrangement.rows, row);
    }
}

/// Behind the member that \a described has before them, in the row that this bus has become.
void Carrier::addNewMembers(const RowRecord &described)
{
    Rows &rows = m_carry.arrangement.rows;
    if (m_newIds.contains(signalsOf(described))) {
        insertById(rows, described);
        return;
    }
    const auto isHome = [&](const RowRecord &row) {
        return row.type == LayoutNode::Bus && row.name == described.name &&
               std::ranges::any_of(m_before.rows, [&](const RowRecord &old) {
                   return old.key == row.key && successorOf(old) == &described;
               });
    };
    const auto home = std::ranges::find_if(rows, isHome);
    if (home == rows.end()) { // its user took it apart
        for (const RowRecord &member : described.members) {
            if (m_newIds.contains(member.id))
                insertById(rows, member);
        }
        return;
    }
    Rows &members = home->members;
    for (size_t place = 0; place < described.members.size(); ++place) {
        const RowRecord &member = described.members[place];
        if (!m_newIds.contains(member.id))
            continue;
        auto position = members.begin();
        for (size_t before = place; before-- > 0 && position == members.begin();) {
            const auto found =
                std::ranges::find(members, described.members[before].id, &RowRecord::id);
            if (found != members.end())
                position = found + 1;
        }
        members.insert(position, member);
    }
}

QString Carrier::nameOf(const RowRecord &row) const
{
    if (row.type == LayoutNode::Bus)
        return row.name;
    const SignalElement *element = m_wasContents.signal(row.id);
    return element ? element->name : QString::number(row.id);
}

/// What of a row is not at its default, in words.
QStringList Carrier::traitsOf(const RowRecord &row) const
{
    QStringList traits;
    const std::optional<size_t> described = describedBus(row);
    const bool isBus = row.type == LayoutNode::Bus;
    if (isBus && !described)
        traits.append(Text::tr("bus of %1 signals").arg(row.members.size()));
    if (row.text != (described ? m_was[*described].text : QString()))
        traits.append(Text::tr("name \"%1\"").arg(row.text));
    if (row.color != LayoutNode::kDefaultColor)
        traits.append(Text::tr("color #%1").arg(row.color & 0xFFFFFF, 6, 16, QLatin1Char('0')));
    if (isBus && row.format != DataFormat::Hexadecimal)
        traits.append(Text::tr("radix %1").arg(DataFormat::typeKey(row.format)));
    if (m_before.open.contains(row.key))
        traits.append(Text::tr("open"));
    return traits;
}

void Carrier::tell(CarryOutcome outcome, const QString &setting, const QStringList &traits,
                   const QString &reason)
{
    const QString text = traits.join(QStringLiteral(", "));
    m_carry.account.append({outcome, m_place, setting, text,
                            outcome == CarryOutcome::Lost ? QString() : text, reason});
}

void Carrier::tellRows(const Rows &rows, const QString &hidden)
{
    for (const RowRecord &row : rows) {
        const QStringList traits =
            QStringList(traitsOf(row)) + (hidden.isEmpty() ? QStringList() : QStringList{hidden});
        tellRows(row.members, {});
        if (traits.isEmpty())
            continue;
        const bool isBus = row.type == LayoutNode::Bus;
        const QString setting = (isBus ? Text::tr("Bus %1") : Text::tr("Row %1")).arg(nameOf(row));
        QStringList gone;
        forEachSignal(row, [&](const RowRecord &signal) {
            if (!m_ids.contains(signal.id))
                gone.append(nameOf(signal));
        });
        const bool isDescribed = describedBus(row).has_value();
        const bool isLeft = isBus && isDescribed && !m_isOrdered && hidden.isEmpty()
                                ? successorOf(row) != nullptr
                                : converted(row).has_value();
        if (!isLeft)
            tell(CarryOutcome::Lost, setting, traits,
                 isBus ? Text::tr("The new design has no such bus.")
                       : Text::tr("The core does not capture it any more."));
        else if (isBus && !isDescribed && !gone.isEmpty())
            tell(CarryOutcome::Adapted, setting, traits,
                 Text::tr("Not captured any more: %1.").arg(gone.join(QStringLiteral(", "))));
        else
            tell(CarryOutcome::Kept, setting, traits);
    }
}

void Carrier::tellOrder()
{
    qsizetype left = 0;
    QStringList gone;
    for (const RowRecord &row : m_before.rows) {
        forEachSignal(row, [&](const RowRecord &signal) {
            if (m_ids.contains(signal.id))
                ++left;
            else
                gone.append(nameOf(signal));
        });
    }
    QStringList reasons;
    if (!gone.isEmpty())
        reasons.append(Text::tr("Not captured any more: %1.").arg(gone.join(QStringLiteral(", "))));
    if (!m_newIds.isEmpty())
        reasons.append(Text::tr("New signals stand by their neighbors in the description: %1.")
                           .arg(m_newIds.size()));
    const QStringList text{Text::tr("%1 rows").arg(m_before.rows.size())};
    const auto changed = left > 0 ? CarryOutcome::Adapted : CarryOutcome::Lost;
    tell(reasons.isEmpty() ? CarryOutcome::Kept : changed, Text::tr("Order of the rows"), text,
         reasons.join(u' '));
}

} // namespace

ArrangementCarry carryArrangement(const Arrangement &before, const WindowContents &was,
                                  const WindowContents &is, const QHash<int, int> &ids,
                                  const QString &place)
{
    return Carrier(before, was, is, ids, place).carry();
}

} // namespace WaveMonitor
