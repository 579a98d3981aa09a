#pragma once

#include <QList>
#include <QString>

namespace KEO {

struct CoreConfig;

/// One thing that a core's set-up says beside what it seems to say, for the user to look at before
/// a run.
struct TriggerFinding
{
    /// What the text speaks of, so that a page can lead there.
    enum class Subject {
        Core,       ///< the set-up as a whole; index is 0
        Unit,       ///< index is the number of the match unit
        Expression, ///< index is the row in the core's list of expressions
        Amount      ///< the samples of a window; index is 0
    };
    enum class Weight {
        Note,    ///< works, perhaps otherwise than meant
        Obstacle ///< what it speaks of never triggers, or nothing is captured
    };

    Subject subject = Subject::Core;
    int index = 0;
    Weight weight = Weight::Note;
    QString text; ///< a translated sentence, plain text

    bool operator==(const TriggerFinding &) const = default;
};

/// What Start would do with \a core as it stands, by the contents of the registers that it would
/// get: obstacles first, and among them as among the rest the core, its expressions, its units.
/// None for a set-up that is in order. What is said to be never or always so is so; where counters
/// take part, or ports share signals, it may be so unsaid. Quick enough for every edit.
[[nodiscard]] QList<TriggerFinding> checkTrigger(const CoreConfig &core);

} // namespace KEO
