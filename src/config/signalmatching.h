#pragma once

#include <QList>
#include <QStringList>

namespace KEO {

/// What became of one signal from an older list of names to a newer one.
struct SignalMatch
{
    enum Kind {
        Kept,    ///< in both, in the same order among the others that were kept
        Moved,   ///< in both, elsewhere among them
        Renamed, ///< the only one that went and the only one that came between two kept ones
        Removed,
        Added
    };
    Kind kind = Kept;
    int before = -1; ///< position in the older list; -1 of one that was added
    int after = -1;  ///< position in the newer list; -1 of one that was removed

    bool operator==(const SignalMatch &other) const = default;
};

/// Matches two lists of names, such as the flat signals of a core in two builds of a design. Each
/// position of each list is in exactly one match. As many as possible are kept, so a signal put in
/// at the front moves no other one, and nothing is both removed and added under one name. A name
/// may stand in a list more than once; of one that does so very often (kMaxTwins) the occurrences
/// are told apart by their number only.
///
/// In the order of the newer list, then the removed ones in the order of the older. The cost grows
/// with the lists' length, and its logarithm.
[[nodiscard]] QList<SignalMatch> matchSignals(const QStringList &before, const QStringList &after);

/// Occurrences of one name up to which each may be the partner of each.
inline constexpr int kMaxTwins = 16;

} // namespace KEO
