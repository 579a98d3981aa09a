#include "signalmatching.h"

#include <QHash>

#include <algorithm>
#include <vector>

namespace KEO {

namespace {

/// Part of both lists: what their common beginning and end leave.
struct Middle
{
    qsizetype begin = 0;
    qsizetype endBefore = 0;
    qsizetype endAfter = 0;
};

Middle middleOf(const QStringList &before, const QStringList &after)
{
    Middle middle{0, before.size(), after.size()};
    while (middle.begin < std::min(middle.endBefore, middle.endAfter) &&
           before[middle.begin] == after[middle.begin])
        ++middle.begin;
    while (middle.begin < std::min(middle.endBefore, middle.endAfter) &&
           before[middle.endBefore - 1] == after[middle.endAfter - 1]) {
        --middle.endBefore;
        --middle.endAfter;
    }
    return middle;
}

using Places = QHash<QString, QList<int>>; // of each name, ascending

Places placesOf(const QStringList &names, qsizetype begin, qsizetype end)
{
    Places places;
    for (qsizetype i = begin; i < end; ++i)
        places[names[i]].append(int(i));
    return places;
}

/// Partners between two lists while they are looked for; -1 for none.
class Partners final
{
public:
    Partners(qsizetype before, qsizetype after) : m_after(before, -1), m_before(after, -1) {}

    void join(int before, int after)
    {
        m_after[before] = after;
        m_before[after] = before;
    }
    [[nodiscard]] int ofBefore(qsizetype position) const { return m_after[position]; }
    [[nodiscard]] int ofAfter(qsizetype position) const { return m_before[position]; }

private:
    QList<int> m_after;
    QList<int> m_before;
};

/// Joins a longest common subsequence of the middle, by the method of Hunt and Szymanski: of the
/// subsequences of each length so far, the one that ends first in the newer list is gone on with.
void joinCommonSubsequence(const QStringList &before, const QStringList &after,
                           const Middle &middle, Partners &partners)
{
    struct Pair
    {
        int before;
        int after;
        int previous; // in `pairs`; -1 at the front
    };
    const Places places = placesOf(after, middle.begin, middle.endAfter);
    std::vector<Pair> pairs;
    std::vector<int> last; // of a subsequence by its length - 1, in `pairs`
    QHash<QString, int> seen;
    for (int i = int(middle.begin); i < middle.endBefore; ++i) {
        QList<int> candidates = places.value(before[i]);
        const int number = seen[before[i]]++;
        if (candidates.size() > kMaxTwins)
            candidates = candidates.mid(number, 1);
        // From the back, so that this position counts once in a subsequence.
        for (auto place = candidates.crbegin(); place != candidates.crend(); ++place) {
            const auto longer = std::ranges::lower_bound(
                last, *place, {}, [&pairs](int pair) { return pairs[pair].after; });
            const int previous = longer == last.begin() ? -1 : *std::prev(longer);
            pairs.push_back({i, *place, previous});
            if (longer == last.end())
                last.push_back(int(pairs.size()) - 1);
            else
                *longer = int(pairs.size()) - 1;
        }
    }
    for (int pair = last.empty() ? -1 : last.back(); pair >= 0; pair = pairs[pair].previous)
        partners.join(pairs[pair].before, pairs[pair].after);
}

/// Joins what else has one name, first with first.
void joinMoved(const QStringList &before, const QStringList &after, const Middle &middle,
               Partners &partners)
{
    Places waiting;
    for (qsizetype i = middle.endAfter - 1; i >= middle.begin; --i) {
        if (partners.ofAfter(i) < 0)
            waiting[after[i]].append(int(i));
    }
    for (int i = int(middle.begin); i < middle.endBefore; ++i) {
        const auto places = waiting.find(before[i]);
        if (partners.ofBefore(i) < 0 && places != waiting.end() && !places->isEmpty())
            partners.join(i, places->takeLast());
    }
}

/// The one position of [begin, end) for which \a isFree; -1 if there are none or several.
template <typename IsFree>
int onlyFree(qsizetype begin, qsizetype end, IsFree isFree)
{
    int found = -1;
    for (qsizetype i = begin; i < end; ++i) {
        if (!isFree(i))
            continue;
        if (found >= 0)
            return -1;
        found = int(i);
    }
    return found;
}

/// Joins, in each gap between kept ones, the one that went with the one that came, and marks that
/// in \a kinds, which stand by the newer list.
void joinRenamed(QList<SignalMatch::Kind> &kinds, qsizetype sizeBefore, Partners &partners)
{
    qsizetype gapBefore = 0;
    qsizetype gapAfter = 0;
    for (qsizetype end = 0; end <= kinds.size(); ++end) {
        const bool isLast = end == kinds.size();
        if (!isLast && kinds[end] != SignalMatch::Kept)
            continue;
        const qsizetype endBefore = isLast ? sizeBefore : partners.ofAfter(end);
        const int gone =
            onlyFree(gapBefore, endBefore, [&](qsizetype i) { return partners.ofBefore(i) < 0; });
        const int came =
            onlyFree(gapAfter, end, [&](qsizetype j) { return partners.ofAfter(j) < 0; });
        if (gone >= 0 && came >= 0) {
            partners.join(gone, came);
            kinds[came] = SignalMatch::Renamed;
        }
        gapBefore = endBefore + 1;
        gapAfter = end + 1;
    }
}

} // namespace

QList<SignalMatch> matchSignals(const QStringList &before, const QStringList &after)
{
    const Middle middle = middleOf(before, after);
    Partners partners(before.size(), after.size());
    for (int i = 0; i < middle.begin; ++i)
        partners.join(i, i);
    for (int i = int(middle.endBefore), j = int(middle.endAfter); i < before.size(); ++i, ++j)
        partners.join(i, j);

    QList<SignalMatch::Kind> kinds(after.size(), SignalMatch::Added);
    const auto markJoined = [&](SignalMatch::Kind kind) {
        for (qsizetype j = 0; j < after.size(); ++j) {
            if (kinds[j] == SignalMatch::Added && partners.ofAfter(j) >= 0)
                kinds[j] = kind;
        }
    };
    joinCommonSubsequence(before, after, middle, partners);
    markJoined(SignalMatch::Kept);
    joinMoved(before, after, middle, partners);
    markJoined(SignalMatch::Moved);
    joinRenamed(kinds, before.size(), partners);

    QList<SignalMatch> matches;
    matches.reserve(std::max(before.size(), after.size()));
    for (int j = 0; j < after.size(); ++j)
        matches.append({kinds[j], partners.ofAfter(j), j});
    for (int i = 0; i < before.size(); ++i) {
        if (partners.ofBefore(i) < 0)
            matches.append({SignalMatch::Removed, i, -1});
    }
    return matches;
}

} // namespace KEO
