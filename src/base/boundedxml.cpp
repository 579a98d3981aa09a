#include "boundedxml.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QRegularExpression>
#include <QStringConverter>
#include <QXmlStreamReader>

#include <optional>

namespace KEO {
namespace {

using namespace Qt::StringLiterals;

/// An attribute is a node with a text node of its own and a place in a hash.
constexpr int kNodesOfAttribute = 3;

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::BoundedXml)
};

Error errorAt(Error::Kind kind, const QString &message, qint64 line, qint64 column)
{
    return {kind,
            Text::tr("%1 at %2:%3").arg(message, QString::number(line), QString::number(column))};
}

Error errorAt(QStringView text, qsizetype position, const QString &message)
{
    const QStringView before = text.first(position);
    const qsizetype lineStart = before.lastIndexOf(u'\n') + 1;
    return errorAt(Error::Limit, message, before.count(u'\n') + 1, position - lineStart + 1);
}

Error tooManyAttributes(QStringView text, qsizetype position, int allowed)
{
    return errorAt(text, position, Text::tr("A tag has more than %1 attributes").arg(allowed));
}

Error tooLarge(qsizetype allowed)
{
    return errorAt(Error::Limit, Text::tr("The document is larger than %1 bytes").arg(allowed), 0,
                   0);
}

/// First of \a wanted in \a text from \a position on that no quotes enclose; the end if there is
/// none.
template <typename Wanted>
qsizetype findUnquoted(QStringView text, qsizetype position, Wanted wanted)
{
    QChar quote;
    for (; position < text.size(); ++position) {
        const QChar c = text[position];
        if (!quote.isNull())
            quote = c == quote ? QChar() : quote;
        else if (c == u'"' || c == u'\'')
            quote = c;
        else if (wanted(c))
            break;
    }
    return position;
}

qsizetype behind(QStringView text, QStringView terminator, qsizetype position)
{
    const qsizetype found = text.indexOf(terminator, position);
    return found < 0 ? text.size() : found + terminator.size();
}

/// Refuses what already costs the stream parser too much: it compares every attribute of a tag with
/// every other, and expands entities while it reads the declarations of a DOCTYPE. Follows markup
/// only as far as well-formed text needs; in other text the parser stops first.
std::optional<Error> checkMarkup(QStringView text, const XmlLimits &limits)
{
    qsizetype position = 0;
    while ((position = text.indexOf(u'<', position)) >= 0) {
        const QStringView rest = text.sliced(position);
        if (rest.startsWith(u"<!--")) {
            position = behind(text, u"-->", position + 4);
        } else if (rest.startsWith(u"<![CDATA[")) {
            position = behind(text, u"]]>", position);
        } else if (rest.startsWith(u"<?")) {
            position = behind(text, u"?>", position);
        } else if (rest.startsWith(u"<!")) {
            position = findUnquoted(text, position, [](QChar c) { return c == u'[' || c == u'>'; });
            if (position < text.size() && text[position] == u'[')
                return errorAt(text, position, Text::tr("A DOCTYPE must not declare anything"));
        } else {
            int attributes = 0;
            const auto endsTag = [&](QChar c) {
                attributes += c == u'=' ? 1 : 0;
                return c == u'>' || attributes > limits.maxAttributes;
            };
            position = findUnquoted(text, position, endsTag);
            if (attributes > limits.maxAttributes)
                return tooManyAttributes(text, position, limits.maxAttributes);
        }
    }
    return std::nullopt;
}

/// Walks the whole text without a tree: every fault of form, the depth and the number of nodes.
std::optional<Error> checkStream(const QString &text, const XmlLimits &limits)
{
    QXmlStreamReader reader(text);
    reader.setNamespaceProcessing(false);
    const auto refuse = [&](const QString &message) {
        return errorAt(Error::Limit, message, reader.lineNumber(), reader.columnNumber());
    };
    qint64 nodes = 0;
    int depth = 0;
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        nodes += 1;
        if (token == QXmlStreamReader::StartElement) {
            nodes += kNodesOfAttribute * reader.attributes().size();
            depth += 1;
        } else if (token == QXmlStreamReader::EndElement) {
            nodes -= 1;
            depth -= 1;
        }
        if (depth > limits.maxDepth)
            return refuse(Text::tr("Elements are nested more than %1 deep").arg(limits.maxDepth));
        if (nodes > limits.maxNodes)
            return refuse(Text::tr("The document has more than %1 elements, attributes and texts")
                              .arg(limits.maxNodes));
    }
    if (reader.hasError())
        return errorAt(Error::Format, reader.errorString(), reader.lineNumber(),
                       reader.columnNumber());
    return std::nullopt;
}

const QRegularExpression &declaration()
{
    static const QRegularExpression pattern(
        uR"(\A<\?xml\s+version\s*=\s*(?:"[^"<>]{0,64}"|'[^'<>]{0,64}'))"
        uR"((?:\s+encoding\s*=\s*["']([A-Za-z][A-Za-z0-9._-]{0,63})["'])?)"
        uR"((?:\s+standalone\s*=\s*["'](?:yes|no)["'])?\s*\?>)"_s);
    return pattern;
}

/// \a text with its XML declaration overwritten by blanks, so that lines and columns stay.
QString withoutDeclaration(QString text)
{
    if (text.startsWith(QChar::ByteOrderMark))
        text.remove(0, 1);
    const QRegularExpressionMatch match = declaration().match(text.left(1024));
    for (qsizetype i = 0; i < match.capturedLength(); ++i) {
        if (text[i] != u'\n')
            text[i] = u' ';
    }
    return text;
}

Result<QString> decode(const QByteArray &bytes)
{
    QByteArray encoding = "UTF-8";
    if (const auto detected = QStringConverter::encodingForData(bytes, u'<')) {
        encoding = QStringConverter::nameForEncoding(*detected);
    } else {
        const QString start = QString::fromLatin1(bytes.first(qMin<qsizetype>(bytes.size(), 1024)));
        const QString declared = declaration().match(start).captured(1);
        if (!declared.isEmpty())
            encoding = declared.toLatin1();
    }
    QStringDecoder decoder(encoding.constData());
    if (!decoder.isValid())
        return errorAt(
            Error::Format,
            Text::tr("The encoding %1 is not supported").arg(QString::fromLatin1(encoding)), 1, 1);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return errorAt(Error::Format,
                       Text::tr("The document is not valid %1").arg(QString::fromLatin1(encoding)),
                       0, 0);
    return text;
}

} // namespace

Result<QDomDocument> parseBoundedXml(const QString &text, const XmlLimits &limits)
{
    if (text.size() > limits.maxSize)
        return tooLarge(limits.maxSize);
    const QString content = withoutDeclaration(text);
    if (const std::optional<Error> error = checkMarkup(content, limits))
        return *error;
    if (const std::optional<Error> error = checkStream(content, limits))
        return *error;
    QDomDocument document;
    QString message;
    int line = 0;
    int column = 0;
    if (!document.setContent(content, &message, &line, &column))
        return errorAt(Error::Format, message, line, column);
    return document;
}

Result<QDomDocument> parseBoundedXml(const QByteArray &bytes, const XmlLimits &limits)
{
    if (bytes.size() > limits.maxSize)
        return tooLarge(limits.maxSize);
    const Result<QString> text = decode(bytes);
    if (!text)
        return text.error();
    return parseBoundedXml(*text, limits);
}

} // namespace KEO
