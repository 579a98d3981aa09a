#pragma once

#include "descriptionchange.h"
#include "loadeddescription.h"

namespace KEO {

/// What differs between two descriptions, a description and itself giving nothing: first what
/// concerns the whole, then core by core in the order of the newer one. Cores meet by their number.
///
/// Told once each: a core, or a match unit, that came or went stands for all of it. Told as a
/// user's settings (DescriptionChange::Saved), because saving a project writes them into the file
/// as well: windows, samples in a window and trigger position of a standard core; function, values,
/// matches and `countinuous` of a unit; the expressions of a dynamic core; shown names. Whether a
/// unit is enabled is the design's, although a user may switch one off for good: the width of the
/// registers hangs on it. The form of the file counts as saved too: its version, and a check value
/// that only one of the two has. The width of registers is not told, it follows from what is.
///
/// Descriptions of different kinds of core are compared in what both kinds have.
[[nodiscard]] QList<DescriptionChange> descriptionChanges(const LoadedDescription &before,
                                                          const LoadedDescription &after);

} // namespace KEO
