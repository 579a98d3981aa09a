#pragma once

#include "datafilewriter.h"

#include <config/descriptionkind.h>
#include <export/exportfiles.h>

#include <QString>

#include <initializer_list>

namespace KEO {

/// Which window an arrangement of waves is for: that of one core and window number, which it keeps
/// until a newer one comes; or any with the window number, and no longer than until the next
/// capture.
enum class LayoutKey { CoreAndWindow, Window };

/// Where the kinds of design differ by a flag or a text alone; one row for each kind. The texts are
/// for kindText.
struct KindTraits
{
    DescriptionKind kind;
    ExportMode exportMode;
    LayoutKey layoutKey;
    bool hasDelay;   ///< a capture begins after a delay, and not on a trigger
    bool namesCores; ///< the windows of a data file carry the number of their core
    bool needsWaves; ///< a saved session without waves is not worth opening
    /// A session that is opened and saved once more has its samples under the name of the project
    /// file, and the paths under that of the samples.
    bool swapsPaths;
    const char *savedTitle;     ///< of a wave tab from a file; %1 core, %2 window
    const char *stopped;        ///< in a box after Stop, or null
    const char *forced;         ///< in a box after Force Trigger, or null
    const char *noData;         ///< %1 core, %2 window
    const char *unknownError;   ///< %1 result
    const char *invalidSession; ///< a saved session whose description can't be loaded

    /// The numbers under which a data file has a window; its contents are left open.
    [[nodiscard]] WindowToSave numbersOf(int core, int window, qsizetype position) const;
};

/// The row of a kind. An unknown kind counts as standard.
[[nodiscard]] const KindTraits &kindTraits(DescriptionKind kind);

/// A text of the table in the user's language, with \a numbers in the places that it has for them;
/// empty for null.
[[nodiscard]] QString kindText(const char *text, std::initializer_list<int> numbers = {});

/// What is told at the end of a run with that result; empty for success.
[[nodiscard]] QString deviceErrorText(const KindTraits &kind, int resultID);
[[nodiscard]] QString noServerText();
/// The samples of a session were captured from something else than its description.
[[nodiscard]] QString otherDesignText();

} // namespace KEO
