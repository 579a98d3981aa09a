#pragma once

#include "coreconfig.h"
#include "descriptionfile.h"

class QDomDocument;

namespace KEO {

/// The description of the standard cores of a design (.keo, .zeo): XML from the FPGA tool flow,
/// read at project start and saved back with the user's trigger settings.
///
/// Reading is lenient where the tool flow is: an absent or malformed number is 0, an element for a
/// port or unit that no core has is skipped. It is strict where a file could do harm: see
/// kDescriptionLimits and the two bounds below. A description is taken whole or refused whole; a
/// refusal gives an empty list, and its reason goes to the debug log. Numbers are not checked
/// against each other: a depth, amount or window number of 0 or below loads as it stands.

/// Reads the description at \a path as Latin-1, whatever encoding it declares, so that every byte
/// survives a load and a save. An empty file holds no cores and is no error. \a idOut receives the
/// design's check value (`KEO_ID`, empty if there is none), \a okOut whether the load succeeded,
/// \a errorOut the message for the user (empty on success). Each may be null.
CoreList loadStandardConfigFile(const QString &path, QString *idOut = nullptr,
                                bool *okOut = nullptr, QString *errorOut = nullptr);

/// The same on a text, such as the one that a file's bytes stand for.
CoreList loadStandardConfig(const QString &text, QString *idOut = nullptr, bool *okOut = nullptr,
                            QString *errorOut = nullptr);

/// The text of a file's bytes: Latin-1, without a byte order mark.
QString standardConfigText(const QByteArray &bytes);

/// The cores of a parsed description and its check value, whatever its version says. Empty when the
/// cores exceed the bounds above.
CoreList readCoreElements(const QDomDocument &document, QString *idOut = nullptr);

/// The whole document, all of its characters in Latin-1. Not in it: the check value, `active` and
/// `expressionEnabled`. Characters that XML can't hold become U+FFFD.
QString saveStandardConfig(const CoreList &cores);

/// Writes that document in Latin-1 and text mode. False when the file can't be written; then an
/// older file at \a path is untouched.
bool saveStandardConfigFile(const CoreList &cores, const QString &path);

} // namespace KEO
