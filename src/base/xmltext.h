#pragma once

#include <QString>

class QXmlStreamWriter;

namespace KEO {

/// \a text with a replacement character (U+FFFD) for every character that no XML file can hold, not
/// even as a reference: control characters but tab, line feed and carriage return, halves of
/// surrogate pairs, U+FFFE and U+FFFF. Every text on its way into an XML writer passes through
/// here.
QString xmlSafeText(const QString &text);

/// Writes \a text as the content of the open element, safe as above. Text of blanks alone goes into
/// a CDATA section, since a reader takes it for indentation elsewhere.
void writeXmlContent(QXmlStreamWriter &xml, const QString &text);

/// A whole XML document with references for the characters that would not come back from a Latin-1
/// file as they are: all beyond Latin-1, and carriage returns. The names of elements and attributes
/// must be ASCII, and no CDATA section may hold such a character.
QString latin1XmlDocument(const QString &document);

} // namespace KEO
