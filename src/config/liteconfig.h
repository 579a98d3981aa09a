#pragma once

#include "litecoreconfig.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace KEO {

/// The description of the lite cores of a design (.keo, .zeo with the `Mode` "Lite"): XML from the
/// FPGA tool flow. It has the root and the signal lists of a standard description, see
/// standardconfig.h for how lenient and how strict reading is and for the bounds. Where the two
/// part: the encoding is the document's own, versions have no lower form than "3.0" to be told
/// from, and whatever element a bus holds is a member of it.

/// Reads the description at \a path. An empty file holds no cores and is no error. \a idOut
/// receives the design's check value (`KEO_ID`, empty if there is none), \a okOut whether the load
/// succeeded, \a errorOut the message for the user (empty on success). Each may be null. A refusal
/// gives an empty list.
QList<LiteCoreConfig> loadLiteConfigFile(const QString &path, QString *idOut = nullptr,
                                         bool *okOut = nullptr, QString *errorOut = nullptr);

/// The same on the bytes of a file.
QList<LiteCoreConfig> loadLiteConfig(const QByteArray &bytes, QString *idOut = nullptr,
                                     bool *okOut = nullptr, QString *errorOut = nullptr);

/// The whole document in UTF-8, as its declaration says. Not in it: the check value and `active`.
/// Characters that XML can't hold become U+FFFD.
QByteArray saveLiteConfig(const QList<LiteCoreConfig> &cores);

/// Writes that document in text mode. False when the file can't be written; then an older file at
/// \a path is untouched.
bool saveLiteConfigFile(const QList<LiteCoreConfig> &cores, const QString &path);

} // namespace KEO
