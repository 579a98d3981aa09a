#pragma once

#include <base/result.h>

#include <QByteArray>
#include <QString>

namespace KEO {

/// Which kind of core a description is for.
enum class DescriptionKind { Unknown, Standard, Lite };

/// Looks into the description at \a path: its extension tells nothing of the kind, its element
/// `Mode` does, and one without it is for standard cores. Never Unknown: another mode is an error,
/// as is a file that is no XML or can't be read.
[[nodiscard]] Result<DescriptionKind> readDescriptionKind(const QString &path);

/// What stands before the cores of a description.
struct DescriptionHead
{
    DescriptionKind kind = DescriptionKind::Unknown; ///< never Unknown when it was read
    QString version;                                 ///< text of the element; may be empty
};

/// The head of a description's bytes, as readDescriptionKind looks into a file.
[[nodiscard]] Result<DescriptionHead> readDescriptionHead(const QByteArray &bytes);

/// The same as readDescriptionKind, with Unknown for an error, which goes to the debug log.
DescriptionKind descriptionKind(const QString &path);

} // namespace KEO
