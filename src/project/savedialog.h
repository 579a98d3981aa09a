#pragma once

#include <QString>

class QObject;
class QWidget;

namespace KEO {

/// Where the dialog starts: beside the file that was opened last, with its base name. \a window is
/// what holds the project; empty if it knows no such file in its property `startDir`.
[[nodiscard]] QString suggestedProjectPath(const QObject *window);

/// Asks the user for the path of a project file. A name without a suffix gets ".analyzer_prj".
/// Empty when the user gave up.
[[nodiscard]] QString askProjectPath(QWidget *parent, const QString &suggestion);

} // namespace KEO
