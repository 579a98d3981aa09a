#include "xmltext.h"

#include <QXmlStreamWriter>

#include <algorithm>

namespace KEO {
namespace {

bool isXmlCharacter(char32_t c)
{
    return c == U'\t' || c == U'\n' || c == U'\r' || (c >= 0x20 && c < 0xD800) ||
           (c > 0xDFFF && c < 0xFFFE) || c > 0xFFFF;
}

bool looksLikeIndentation(const QString &text)
{
    return std::all_of(text.begin(), text.end(),
                       [](QChar c) { return c == u' ' || c == u'\t' || c == u'\n'; });
}

} // namespace

QString xmlSafeText(const QString &text)
{
    QString result;
    result.reserve(text.size());
    for (const char32_t c : text.toUcs4())
        result += QChar::fromUcs4(isXmlCharacter(c) ? c : char32_t(QChar::ReplacementCharacter));
    return result;
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
