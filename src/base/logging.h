#pragma once

#include <QLoggingCategory>

namespace KEO {

// The program's log: a category a subsystem, `signalscope.<subsystem>`. It takes the reasons behind
// what is passed over in silence. Debug messages are off unless a filter rule asks for them, as
// `-debug` of the desktop program and the environment variable QT_LOGGING_RULES do. The viewer's
// accounts of its rows are no part of it: they stand in Qt's default category.

Q_DECLARE_LOGGING_CATEGORY(lcCapture)
Q_DECLARE_LOGGING_CATEGORY(lcConfig) ///< why a description was refused: users are told less
Q_DECLARE_LOGGING_CATEGORY(lcExport)
Q_DECLARE_LOGGING_CATEGORY(lcLink)
Q_DECLARE_LOGGING_CATEGORY(lcProgrammer)
Q_DECLARE_LOGGING_CATEGORY(lcProject)
Q_DECLARE_LOGGING_CATEGORY(lcServers)
Q_DECLARE_LOGGING_CATEGORY(lcShell)
Q_DECLARE_LOGGING_CATEGORY(lcTrigger)
/// A message for each row that is painted: many a second.
Q_DECLARE_LOGGING_CATEGORY(lcWavePaint)

/// What of the log and of the viewer's accounts a program shows: everything but the painting, all
/// but debug messages, or nothing at all. QT_LOGGING_RULES has the last word.
enum class LogOutput { Debug, Warnings, Nothing };
void setLogOutput(LogOutput output);

} // namespace KEO
