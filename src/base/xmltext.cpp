#include "xmltext.h"

#include <QXmlStreamWriter>

#include <algorithm>

namespace KEO {
namespace {

/// Length of the storable character at \a position in UTF-16 units, or 0.
int storableLength(QStringView text, qsizetype position)
{
    const char16_t unit = text[position].unicode();
    if (QChar::isHighSurrogate(unit))
        return position + 1 < text.size() && text[position + 1].isLowSurrogate() ? 2 : 0;
    if (QChar::isLowSurrogate(unit) || unit >= 0xFFFE)
        return 0;
    return unit >= 0x20 || unit == u'\t' || unit == u'\n' || unit == u'\r' ? 1 : 0;
}

bool looksLikeIndentation(const QString &text)
{
    return std::all_of(text.begin(), text.end(),
                       [](QChar c) { return c == u' ' || c == u'\t' || c == u'\n'; });
}

} // namespace

QString xmlSafeText(const QString &text, Unstorable unstorable)
{
    QString safe;
    qsizetype copied = 0; // characters of text that are dealt with
    for (qsizetype i = 0; i < text.size();) {
        const int length = storableLength(text, i);
        if (length == 0) {
            safe += QStringView(text).mid(copied, i - copied);
            if (unstorable == Unstorable::Replaced)
                safe += QChar(QChar::ReplacementCharacter);
            copied = i + 1;
        }
        i += std::max(length, 1);
    }
    if (copied == 0)
        return text;
    safe += QStringView(text).mid(copied);
    return safe;
}

void writeXmlContent(QXmlStreamWriter &xml, const QString &text)
{
    if (!text.isEmpty() && looksLikeIndentation(text))
        xml.writeCDATA(text);
    else
        xml.writeCharacters(xmlSafeText(text));
}

QString latin1XmlDocument(const QString &document)
{
    QString result;
    result.reserve(document.size());
    for (const char32_t c : document.toUcs4()) {
        if (c > 0xFF || c == U'\r')
            result += QStringLiteral("&#x%1;").arg(quint32(c), 0, 16);
        else
            result += QChar(char16_t(c));
    }
    return result;
}

} // namespace KEO
