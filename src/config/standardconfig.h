#pragma once

#include "coreconfig.h"
#include "descriptionencoding.h"
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

struct StandardText
{
    QString text;
    DescriptionEncoding encoding = DescriptionEncoding::Latin1;
};

/// The text of a file's bytes, without a byte order mark. UTF-8 if they have its mark or declare it
/// and are valid; else Latin-1, whatever they declare. UTF-16 and UTF-32, which the first bytes
/// show, are an error.
[[nodiscard]] Result<StandardText> standardConfigText(const QByteArray &bytes);

/// Reads the description at \a path. An empty file holds no cores and is no error. \a idOut
/// receives the design's check value (`KEO_ID`, empty if there is none), \a okOut whether the load
/// succeeded, \a errorOut the message for the user (empty on success), \a encodingOut what to save
/// the cores in. Each may be null.
CoreList loadStandardConfigFile(const QString &path, QString *idOut = nullptr,
                                bool *okOut = nullptr, QString *errorOut = nullptr,
                                DescriptionEncoding *encodingOut = nullptr);

/// The same on a text, such as the one that a file's bytes stand for.
CoreList loadStandardConfig(const QString &text, QString *idOut = nullptr, bool *okOut = nullptr,
                            QString *errorOut = nullptr);

/// The cores of a parsed description and its check value, whatever its version says. Empty when the
/// cores exceed the bounds above.
CoreList readCoreElements(const QDomDocument &document, QString *idOut = nullptr);

/// The whole document, all of its characters in Latin-1. Not in it: the check value, `active` and
/// `expressionEnabled`. Characters that XML can't hold become U+FFFD.
QString saveStandardConfig(const CoreList &cores);

/// The bytes of that document. In UTF-8 they say so, unless they are ASCII and thus the same in
/// both.
QByteArray standardConfigBytes(const CoreList &cores, DescriptionEncoding encoding);

/// Writes those bytes in text mode. False when the file can't be written; then an older file at
/// \a path is untouched.
bool saveStandardConfigFile(const CoreList &cores, const QString &path,
                            DescriptionEncoding encoding = DescriptionEncoding::Latin1);

} // namespace KEO
