#pragma once

#include "triggercheck.h"
#include "triggerdiagnosis.h"

#include <QList>
#include <QString>

#include <optional>

namespace KEO {

struct CoreConfig;

/// One thing to tell of why a core did not trigger.
struct DiagnosisLine
{
    /// What the text speaks of: Core, Expression or Unit, see TriggerFinding.
    TriggerFinding::Subject subject = TriggerFinding::Subject::Core;
    int index = 0; ///< number of the unit, row of the expression; else 0
    TriggerFinding::Weight weight = TriggerFinding::Weight::Note;
    std::optional<qsizetype> sample; ///< that the text names, to look at
    QString text;                    ///< a translated sentence, plain text

    bool operator==(const DiagnosisLine &) const = default;
};

/// \a diagnosis of \a program, which is that of \a core, in words: what came of the trigger, what
/// no capture can ever show (see checkTrigger), then expressions and units in force, each with a
/// sentence on what it came to and on what was missing.
[[nodiscard]] QList<DiagnosisLine> diagnosisLines(const CoreConfig &core,
                                                  const TriggerProgram &program,
                                                  const TriggerDiagnosis &diagnosis);

} // namespace KEO
