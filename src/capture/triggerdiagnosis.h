#pragma once

#include "portsamples.h"
#include "triggerevaluation.h"
#include "triggerprogram.h"

#include <QBitArray>
#include <QList>

#include <optional>
#include <vector>

namespace KEO {

/// The sample at which a comparison came nearest to matching, of those where it is known not to;
/// the first of equally near ones.
struct NearestMiss
{
    /// What the distance is measured to.
    enum class To {
        Pattern, ///< by bits that do not fit; none of a !=, which fits wherever it misses
        Minimum, ///< `bound` is one below which nothing matches, or above which for "not in range"
        Maximum  ///< the other way round
    };

    qsizetype sample = 0;
    To to = To::Pattern;
    QList<int> wrongBits; ///< of a pattern, bits of the port, 0 its first signal
    // Of a number, as wide as the port, most significant bit first.
    QBitArray value;    ///< of the port
    QBitArray bound;    ///< as the unit has it
    QBitArray distance; ///< between the two

    bool operator==(const NearestMiss &) const = default;
};

/// What one match unit did in a window. Samples at which that is not known count as `unknown` and
/// as nothing else.
struct UnitDiagnosis
{
    qsizetype matches = 0; ///< samples at which the comparison holds
    qsizetype hits = 0;    ///< samples at which the unit reports, its counter included
    qsizetype misses = 0;  ///< samples at which it does not
    qsizetype unknown = 0;
    std::optional<qsizetype> firstHit;
    qsizetype longestRun = 0; ///< of hits, in samples
    /// Matches that the counter got to within the window, at most those that it waits for; 0
    /// without a counter.
    int counted = 0;
    /// Of the comparison. None if it holds at all samples, is known at none, or compares a number
    /// with a bit that was not captured.
    std::optional<NearestMiss> nearest;
};

/// A unit that is the same at all samples at which it is known, and alone keeps an expression from
/// being true.
struct DeadTerm
{
    int slot = 0;
    bool reports = false; ///< at all samples, or at none
    qsizetype hits = 0;   ///< samples at which the expression would be true, were it otherwise
    qsizetype firstHit = 0;
};

/// What one expression came to in a window.
struct ExpressionDiagnosis
{
    /// The sample, of those at which the expression is known to be false, at which the fewest units
    /// had to differ. Of equally near ones, that at which the expression's units stand as they
    /// seldom do: of `M0&M1` it tells more that M0 was missing when M1 came at last than that M1
    /// was not there yet in all the time before. Of these the first one.
    struct Nearest
    {
        struct Unit
        {
            int slot = 0;
            bool reports = false; ///< where it had to do the other
        };
        qsizetype sample = 0;
        QList<Unit> differing; ///< where there is a choice, one of the choices
    };

    qsizetype hits = 0;
    qsizetype unknown = 0;
    std::optional<qsizetype> firstHit;
    std::optional<Nearest> nearest; ///< of one that has no hit but could have
    QList<DeadTerm> dead;           ///< of one that has no hit
};

/// Why a core did or would not trigger in a captured window, see diagnosisLines for it in words.
struct TriggerDiagnosis
{
    qsizetype samples = 0;
    std::vector<UnitDiagnosis> units;             ///< by slot
    std::vector<ExpressionDiagnosis> expressions; ///< as in TriggerProgram::expressions
    qsizetype hits = 0;                           ///< of the trigger
    qsizetype unknown = 0;
    std::optional<qsizetype> firstHit;
};

/// \a evaluation is that of \a program over \a ports.
TriggerDiagnosis diagnoseTrigger(const TriggerProgram &program, const PortSamples &ports,
                                 const TriggerEvaluation &evaluation);

/// The nearest miss of one comparison, \a matches being where it holds.
std::optional<NearestMiss> nearestMiss(const UnitProgram &unit, const PortSamples &ports,
                                       const ConditionTrack &matches);

} // namespace KEO
