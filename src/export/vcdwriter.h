#pragma once

#include "exportwindow.h"

#include <QDateTime>

class QIODevice;

namespace KEO {

/// The identifier of the signal at \a position, counted from 1; "!" (position 0) is the clock's.
/// One digit up to 93, then two, base 94, digit d being the character with code d + 33.
[[nodiscard]] QString vcdIdentifier(int position);
/// The signals of readNamedRecords, with their identifiers as ids.
[[nodiscard]] QList<ExportRecord> readVcdRecords(const ExportWindow &window);

/// Writes the signals of \a window as a Value Change Dump, each as a register of one bit; buses do
/// not appear. A clock of period \a period (at least 2 for distinct time stamps) comes first; its
/// active edge lies in the middle of each sample, and all values change with it. Time stamps count
/// in \a timeUnit. The content is UTF-8. False when the device refuses anything.
/// \a clockInverted makes the falling edge the active one, \a triggerSample gets a comment,
/// \a written is the date in the head.
[[nodiscard]] bool writeVcd(QIODevice &out, const QString &moduleName, const QString &clockName,
                            bool clockInverted, const QString &timeUnit, qint64 period,
                            int triggerSample, const ExportWindow &window,
                            const QDateTime &written);

} // namespace KEO
