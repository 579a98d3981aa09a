#pragma once

#include <QString>

class QXmlStreamWriter;

namespace KEO {

/// What becomes of a character that no XML file can hold: U+FFFD stands for it, or nothing. Core
/// descriptions do the one, windows and their exports the other.
enum class Unstorable { Replaced, Dropped };

/// \a text without the characters that no XML file can hold, not even as a reference: control
/// characters but tab, line feed and carriage return, halves of surrogate pairs, U+FFFE and U+FFFF.
/// A file with one of them could not be read again, so every text on its way into one passes
/// through here.
QString xmlSafeText(const QString &text, Unstorable unstorable = Unstorable::Replaced);

/// Writes \a text as the content of the open element, safe as above. Text of blanks alone goes into
/// a CDATA section, since a reader takes it for indentation elsewhere.
void writeXmlContent(QXmlStreamWriter &xml, const QString &text);

/// A whole XML document with references for the characters that would not come back from a Latin-1
/// file as they are: all beyond Latin-1, and carriage returns. The names of elements and attributes
/// must be ASCII, and no CDATA section may hold such a character.
QString latin1XmlDocument(const QString &document);

} // namespace KEO
