#pragma once

#include <base/result.h>

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace KEO {

struct CoreConfig;

/// What a command line changes of one standard core's capture and trigger. What it doesn't name
/// stays as the description has it.
struct TriggerOptions
{
    std::optional<int> core = {}; ///< number in the description; nothing: the first
    std::optional<int> windows = {};
    std::optional<int> amount = {};   ///< samples in a window
    std::optional<int> position = {}; ///< samples before the trigger
    QStringList units = {};           ///< for applyUnitSetting
    /// The expressions to put in force, all others not; "none" alone puts none in force. Empty:
    /// those of the description.
    QStringList expressions = {};

    bool operator==(const TriggerOptions &) const = default;
};

/// Changes \a core by the rules of the page on which a user does so: other windows bring the amount
/// down to the greatest that still fits, and the trigger position with it. An expression that the
/// core has is put in force where it stands, another one in a place that none of these takes. An
/// error of kind Usage is a sentence for the user; the core is then changed in part.
[[nodiscard]] std::optional<Error> applyTriggerOptions(const TriggerOptions &options,
                                                       CoreConfig &core);

/// Options that give a core of the same design, however its trigger is set, what \a core has.
struct WrittenOptions
{
    TriggerOptions options;
    /// Sentences for the user on what no option can say, since no user can set it on the page: the
    /// description has it.
    QStringList remarks;
};
[[nodiscard]] WrittenOptions triggerOptionsOf(const CoreConfig &core);

/// All that a command line can say of the settings of a run.
struct RunSettings
{
    QList<TriggerOptions> cores = {}; ///< those that run; of a lite core its number alone
    int delay = 0;                    ///< ms before a lite core starts
    QString device = {};              ///< model on which the samples depend; empty: not known
    QStringList remarks = {};         ///< see WrittenOptions
};

} // namespace KEO
