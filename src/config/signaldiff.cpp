#include "signaldiff.h"

#include "signalmatching.h"

#include <QMap>

#include <algorithm>
#include <utility>

namespace KEO {

namespace {

using Subject = DescriptionChange::Subject;
using Action = DescriptionChange::Action;
using Origin = DescriptionChange::Origin;

struct Bus
{
    const SignalEntry *entry = nullptr;
    qsizetype firstBit = 0; ///< flat position; the others follow

    [[nodiscard]] qsizetype end() const { return firstBit + entry->members.size(); }
};

/// A signal list in flat order, with the buses that its bits belong to.
struct FlatList
{
    explicit FlatList(const QList<SignalEntry> &entries)
        : names(flatSignalNames(entries)), texts(flatSignalTexts(entries)), busOf(names.size(), -1)
    {
        qsizetype bit = 0;
        for (const SignalEntry &entry : entries) {
            if (entry.members.isEmpty()) {
                ++bit;
                continue;
            }
            const Bus bus{&entry, bit};
            for (; bit < bus.end(); ++bit)
                busOf[bit] = int(buses.size());
            buses.append(bus);
            busNames.append(entry.name);
        }
    }

    QStringList names;
    QStringList texts;
    QList<int> busOf; ///< position in `buses`; -1 for a single signal
    QList<Bus> buses;
    QStringList busNames;
};

DescriptionChange changed(Subject subject, const QString &name, const QString &before,
                          const QString &after)
{
    return {.subject = subject, .name = name, .before = before, .after = after};
}

DescriptionChange ofBus(Action action, const Bus &bus)
{
    DescriptionChange change{.subject = Subject::Bus, .action = action};
    if (action == Action::Added)
        change.after = bus.entry->name;
    else if (action == Action::Removed)
        change.before = bus.entry->name;
    else
        change.name = bus.entry->name;
    if (action != Action::Formed && action != Action::Dissolved)
        change.signalCount = int(bus.entry->members.size());
    return change;
}

DescriptionChange savedText(Subject subject, const QString &name, const QString &before,
                            const QString &after)
{
    DescriptionChange change = changed(subject, name, before, after);
    change.origin = Origin::Saved;
    return change;
}

/// Compares two lists once.
class SignalDiff final
{
public:
    SignalDiff(const QList<SignalEntry> &before, const QList<SignalEntry> &after)
        : m_before(before),
          m_after(after),
          m_matches(matchSignals(m_before.names, m_after.names)),
          m_partner(m_before.names.size(), nullptr),
          m_partnerOfAfter(m_after.names.size(), nullptr),
          m_toldBefore(m_before.names.size(), false),
          m_toldAfter(m_after.names.size(), false)
    {
        for (const SignalMatch &match : std::as_const(m_matches)) {
            if (match.before >= 0 && match.after >= 0) {
                m_partner[match.before] = &match;
                m_partnerOfAfter[match.after] = &match;
            }
        }
        pairBuses();
    }

    [[nodiscard]] QList<DescriptionChange> run()
    {
        for (qsizetype i = 0; i < m_before.buses.size(); ++i) {
            if (m_busPartner[i] < 0)
                tellLostBus(m_before.buses[i]);
            else
                tellPair(m_before.buses[i], m_after.buses[m_busPartner[i]], int(i));
        }
        for (qsizetype j = 0; j < m_after.buses.size(); ++j) {
            if (!m_isPaired[j])
                tellNewBus(m_after.buses[j]);
        }
        for (const SignalMatch &match : std::as_const(m_matches))
            tellSignal(match);
        return std::move(m_changes);
    }

private:
    void pairBuses()
    {
        m_busPartner.fill(-1, m_before.buses.size());
        m_isPaired.fill(false, m_after.buses.size());
        const auto join = [&](int before, int after) {
            m_busPartner[before] = after;
            m_isPaired[after] = true;
        };
        for (const SignalMatch &match : matchSignals(m_before.busNames, m_after.busNames)) {
            if (match.kind == SignalMatch::Kept || match.kind == SignalMatch::Moved)
                join(match.before, match.after);
        }
        QMap<std::pair<int, int>, int> shared; // bits of two buses
        for (const SignalMatch &match : std::as_const(m_matches)) {
            if (match.before < 0 || match.after < 0)
                continue;
            const std::pair buses(m_before.busOf[match.before], m_after.busOf[match.after]);
            if (buses.first >= 0 && buses.second >= 0)
                ++shared[buses];
        }
        QList<std::pair<int, int>> pairs = shared.keys();
        std::ranges::stable_sort(pairs, std::greater(),
                                 [&](const auto &pair) { return shared[pair]; });
        for (const auto &[before, after] : std::as_const(pairs)) {
            if (m_busPartner[before] < 0 && !m_isPaired[after])
                join(before, after);
        }
    }

    void tellLostBus(const Bus &bus)
    {
        bool stays = false;
        for (qsizetype bit = bus.firstBit; bit < bus.end(); ++bit)
            stays = stays || m_partner[bit];
        if (!stays)
            std::fill(m_toldBefore.begin() + bus.firstBit, m_toldBefore.begin() + bus.end(), true);
        m_changes.append(ofBus(stays ? Action::Dissolved : Action::Removed, bus));
    }

    void tellNewBus(const Bus &bus)
    {
        bool wasThere = false;
        for (qsizetype bit = bus.firstBit; bit < bus.end(); ++bit)
            wasThere = wasThere || m_partnerOfAfter[bit];
        if (!wasThere)
            std::fill(m_toldAfter.begin() + bus.firstBit, m_toldAfter.begin() + bus.end(), true);
        m_changes.append(ofBus(wasThere ? Action::Formed : Action::Added, bus));
    }

    void tellPair(const Bus &before, const Bus &after, int number)
    {
        if (before.entry->name != after.entry->name)
            m_changes.append({.subject = Subject::Bus,
                              .action = Action::Renamed,
                              .before = before.entry->name,
                              .after = after.entry->name});
        if (before.entry->text != after.entry->text)
            m_changes.append(savedText(Subject::BusText, after.entry->name, before.entry->text,
                                       after.entry->text));
        if (hasOtherMembers(before, after, number))
            m_changes.append(changed(Subject::BusMembers, after.entry->name, memberText(before),
                                     memberText(after)));
        if (!isMovedWhole(before, after))
            return;
        std::fill(m_toldAfter.begin() + after.firstBit, m_toldAfter.begin() + after.end(), true);
        DescriptionChange moved = ofBus(Action::Moved, after);
        moved.before = QString::number(before.firstBit);
        moved.after = QString::number(after.firstBit);
        m_changes.append(moved);
        for (qsizetype bit = after.firstBit; bit < after.end(); ++bit)
            tellText(*m_partnerOfAfter[bit]);
    }

    /// Of signals that both lists have, one has come into the bus or left it.
    [[nodiscard]] bool hasOtherMembers(const Bus &before, const Bus &after, int number) const
    {
        for (qsizetype bit = before.firstBit; bit < before.end(); ++bit) {
            const SignalMatch *match = m_partner[bit];
            if (match && m_after.busOf[match->after] != m_busPartner[number])
                return true;
        }
        for (qsizetype bit = after.firstBit; bit < after.end(); ++bit) {
            const SignalMatch *match = m_partnerOfAfter[bit];
            if (match && m_before.busOf[match->before] != number)
                return true;
        }
        return false;
    }

    [[nodiscard]] bool isMovedWhole(const Bus &before, const Bus &after) const
    {
        if (before.entry->members.size() != after.entry->members.size())
            return false;
        for (qsizetype i = 0; i < before.entry->members.size(); ++i) {
            const SignalMatch *match = m_partner[before.firstBit + i];
            if (!match || match->kind != SignalMatch::Moved || match->after != after.firstBit + i)
                return false;
        }
        return true;
    }

    [[nodiscard]] static QString memberText(const Bus &bus)
    {
        return flatSignalNames({*bus.entry}).join(QLatin1String(", "));
    }

    void tellSignal(const SignalMatch &match)
    {
        const bool isTold =
            match.after >= 0 ? m_toldAfter[match.after] : m_toldBefore[match.before];
        if (isTold)
            return;
        DescriptionChange change{.subject = Subject::Signal};
        switch (match.kind) {
        case SignalMatch::Kept:
            break;
        case SignalMatch::Moved:
            change.action = Action::Moved;
            change.name = m_after.names[match.after];
            change.before = QString::number(match.before);
            change.after = QString::number(match.after);
            break;
        case SignalMatch::Renamed:
            change.action = Action::Renamed;
            change.before = m_before.names[match.before];
            change.after = m_after.names[match.after];
            break;
        case SignalMatch::Removed:
            change.action = Action::Removed;
            change.before = m_before.names[match.before];
            break;
        case SignalMatch::Added:
            change.action = Action::Added;
            change.after = m_after.names[match.after];
            break;
        }
        if (match.kind != SignalMatch::Kept)
            m_changes.append(change);
        if (match.before >= 0 && match.after >= 0)
            tellText(match);
    }

    void tellText(const SignalMatch &match)
    {
        const QString &before = m_before.texts[match.before];
        const QString &after = m_after.texts[match.after];
        if (before != after)
            m_changes.append(
                savedText(Subject::SignalText, m_after.names[match.after], before, after));
    }

    FlatList m_before;
    FlatList m_after;
    QList<SignalMatch> m_matches;
    QList<const SignalMatch *> m_partner;        ///< by bit of the older list, in m_matches
    QList<const SignalMatch *> m_partnerOfAfter; ///< by bit of the newer list
    QList<int> m_busPartner;                     ///< by bus of the older list; -1 for none
    QList<bool> m_isPaired;                      ///< by bus of the newer list
    QList<bool> m_toldBefore;                    ///< bits that are told with their bus
    QList<bool> m_toldAfter;
    QList<DescriptionChange> m_changes;
};

} // namespace

QList<DescriptionChange> signalChanges(const QList<SignalEntry> &before,
                                       const QList<SignalEntry> &after)
{
    if (before == after)
        return {};
    return SignalDiff(before, after).run();
}

} // namespace KEO
