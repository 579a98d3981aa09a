#pragma once

#include <QString>

namespace KEO {

/// Which kind of core a description is for.
enum class DescriptionKind { Unknown, Standard, Lite };

/// Looks into the description at \a path: its extension tells nothing of the kind, its element
/// `Mode` does, and one without it is for standard cores. Unknown, with the reason in the debug
/// log, for another mode and for a file that is no XML or can't be read.
DescriptionKind descriptionKind(const QString &path);

} // namespace KEO
