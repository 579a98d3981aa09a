#include "boundedxml.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QStringConverter>

#include <utility>

namespace KEO {
namespace {

using namespace Qt::StringLiterals;

/// An attribute is a node with a text node of its own and a place in a hash.
constexpr int kNodesOfAttribute = 3;

constexpr qint64 kCheckAhead = 64 * 1024; // bytes

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::BoundedXml)
};

// Text is UTF-16 or bytes of UTF-8; what markup is made of looks the same in both.
qsizetype find(QStringView text, QLatin1StringView wanted, qsizetype from)
{
    return text.indexOf(wanted, from);
}

qsizetype find(QByteArrayView text, QLatin1StringView wanted, qsizetype from)
{
    return text.indexOf(QByteArrayView(wanted.data(), wanted.size()), from);
}

qsizetype findTag(QStringView text, qsizetype from)
{
    return text.indexOf(u'<', from);
}

qsizetype findTag(QByteArrayView text, qsizetype from)
{
    return text.indexOf('<', from);
}

bool begins(QStringView text, QLatin1StringView wanted)
{
    return text.startsWith(wanted);
}

bool begins(QByteArrayView text, QLatin1StringView wanted)
{
    return text.startsWith(QByteArrayView(wanted.data(), wanted.size()));
}

char16_t unit(QChar c)
{
    return c.unicode();
}

char16_t unit(char c)
{
    return uchar(c);
}

template <typename View>
XmlFault faultAt(View text, qsizetype position, const QString &message)
{
    XmlFault fault{Error::Limit, message, 1, 1};
    for (qsizetype i = 0; i < position; ++i) {
        const bool endsLine = unit(text[i]) == u'\n';
        fault.line += endsLine ? 1 : 0;
        fault.column = endsLine ? 1 : fault.column + 1;
    }
    return fault;
}

XmlFault tooLarge(qsizetype allowed)
{
    return {Error::Limit, Text::tr("The document is larger than %1 bytes").arg(allowed)};
}

/// First of \a wanted in \a text from \a position on that no quotes enclose; the end if there is
/// none.
template <typename View, typename Wanted>
qsizetype findUnquoted(View text, qsizetype position, Wanted wanted)
{
    char16_t quote = 0;
    for (; position < text.size(); ++position) {
        const char16_t c = unit(text[position]);
        if (quote != 0)
            quote = c == quote ? 0 : quote;
        else if (c == u'"' || c == u'\'')
            quote = c;
        else if (wanted(c))
            break;
    }
    return position;
}

template <typename View>
qsizetype behind(View text, QLatin1StringView terminator, qsizetype position)
{
    const qsizetype found = find(text, terminator, position);
    return found < 0 ? text.size() : found + terminator.size();
}

/// Refuses what already costs the stream parser too much: it compares every attribute of a tag with
/// every other, and expands entities while it reads the declarations of a DOCTYPE. Follows markup
/// only as far as well-formed text needs; in other text the parser stops first. Goes on from
/// \a position until that is behind \a until.
template <typename View>
std::optional<XmlFault> checkMarkup(View text, const XmlLimits &limits, qsizetype &position,
                                    qsizetype until)
{
    while (position <= until) {
        position = findTag(text, position);
        if (position < 0) {
            position = text.size() + 1;
            break;
        }
        const View rest = text.sliced(position);
        if (begins(rest, "<!--"_L1)) {
            position = behind(text, "-->"_L1, position + 4);
        } else if (begins(rest, "<![CDATA["_L1)) {
            position = behind(text, "]]>"_L1, position);
        } else if (begins(rest, "<?"_L1)) {
            position = behind(text, "?>"_L1, position);
        } else if (begins(rest, "<!"_L1)) {
            position =
                findUnquoted(text, position, [](char16_t c) { return c == u'[' || c == u'>'; });
            if (position < text.size() && unit(text[position]) == u'[')
                return faultAt(text, position, Text::tr("A DOCTYPE must not declare anything"));
        } else {
            int attributes = 0;
            const auto endsTag = [&](char16_t c) {
                attributes += c == u'=' ? 1 : 0;
                return c == u'>' || attributes > limits.maxAttributes;
            };
            position = findUnquoted(text, position, endsTag);
            if (attributes > limits.maxAttributes)
                return faultAt(
                    text, position,
                    Text::tr("A tag has more than %1 attributes").arg(limits.maxAttributes));
        }
    }
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

/// Name of the encoding that the bytes claim to have.
QByteArray encodingOf(const QByteArray &bytes)
{
    if (const auto detected = QStringConverter::encodingForData(bytes, u'<'))
        return QStringConverter::nameForEncoding(*detected);
    const QString start = QString::fromLatin1(bytes.first(qMin<qsizetype>(bytes.size(), 1024)));
    const QString declared = declaration().match(start).captured(1);
    return declared.isEmpty() ? QByteArray("UTF-8") : declared.toLatin1();
}

std::optional<XmlFault> decode(const QByteArray &bytes, QString &text)
{
    const QByteArray encoding = encodingOf(bytes);
    const QString name = QString::fromLatin1(encoding);
    QStringDecoder decoder(encoding.constData());
    if (!decoder.isValid())
        return XmlFault{Error::Format, Text::tr("The encoding %1 is not supported").arg(name), 1,
                        1};
    text = decoder.decode(bytes);
    if (decoder.hasError())
        return XmlFault{Error::Format, Text::tr("The document is not valid %1").arg(name)};
    return std::nullopt;
}

} // namespace

Error XmlFault::toError() const
{
    return {kind,
            Text::tr("%1 at %2:%3").arg(message, QString::number(line), QString::number(column))};
}

BoundedXmlReader::BoundedXmlReader(const QByteArray &bytes, const XmlLimits &limits)
    : m_limits(limits)
{
    if (bytes.size() > limits.maxSize) {
        m_fault = tooLarge(limits.maxSize);
    } else if (encodingOf(bytes).compare("UTF-8", Qt::CaseInsensitive) != 0) {
        QString text;
        m_fault = decode(bytes, text);
        start(withoutDeclaration(text));
    } else {
        // A device is decoded piece by piece, bytes all at once.
        m_buffer.setData(bytes);
        m_buffer.open(QIODevice::ReadOnly);
        m_xml.setDevice(&m_buffer);
        m_xml.setNamespaceProcessing(false);
    }
}

BoundedXmlReader::BoundedXmlReader(const QString &text, const XmlLimits &limits) : m_limits(limits)
{
    if (text.size() > limits.maxSize)
        m_fault = tooLarge(limits.maxSize);
    else
        start(text);
}

void BoundedXmlReader::start(const QString &text)
{
    qsizetype position = 0;
    if (!m_fault)
        m_fault = checkMarkup(QStringView(text), m_limits, position, text.size());
    m_xml.addData(text);
    m_xml.setNamespaceProcessing(false);
}

bool BoundedXmlReader::next()
{
    if (m_fault || m_xml.atEnd() || !checkAhead())
        return false;
    if (std::exchange(m_leaves, false))
        --m_depth;
    m_xml.readNext();
    takeIntoAccount();
    if (m_xml.hasError() && !m_fault)
        refuse(Error::Format, m_xml.errorString());
    return !m_fault;
}

/// Keeps the check ahead of what the parser has read, and by more than a token. A document that is
/// refused early is not looked at to its end.
bool BoundedXmlReader::checkAhead()
{
    if (m_buffer.isOpen() && m_checked <= m_buffer.pos() + kCheckAhead)
        m_fault = checkMarkup(QByteArrayView(m_buffer.data()), m_limits, m_checked,
                              m_buffer.pos() + 2 * kCheckAhead);
    return !m_fault;
}

void BoundedXmlReader::takeIntoAccount()
{
    if (m_xml.isEndElement()) {
        m_leaves = true;
        return;
    }
    ++m_nodes;
    if (m_xml.isStartElement()) {
        m_nodes += kNodesOfAttribute * m_xml.attributes().size();
        ++m_depth;
    }
    if (m_depth > m_limits.maxDepth)
        refuse(Error::Limit,
               Text::tr("Elements are nested more than %1 deep").arg(m_limits.maxDepth));
    else if (m_nodes > m_allowedNodes)
        refuse(Error::Limit,
               Text::tr("The document has more than %1 elements, attributes and texts")
                   .arg(m_allowedNodes));
}

void BoundedXmlReader::refuse(Error::Kind kind, const QString &message)
{
    if (!m_fault)
        m_fault = XmlFault{kind, message, m_xml.lineNumber(), m_xml.columnNumber()};
}

Result<QDomDocument> parseBoundedXml(const QString &text, const XmlLimits &limits)
{
    if (text.size() > limits.maxSize)
        return tooLarge(limits.maxSize).toError();
    const QString content = withoutDeclaration(text);
    BoundedXmlReader reader(content, limits);
    while (reader.next()) {
    }
    if (reader.fault())
        return reader.fault()->toError();
    QDomDocument document;
    QString message;
    int line = 0;
    int column = 0;
    if (!document.setContent(content, &message, &line, &column))
        return XmlFault{Error::Format, message, line, column}.toError();
    return document;
}

Result<QDomDocument> parseBoundedXml(const QByteArray &bytes, const XmlLimits &limits)
{
    if (bytes.size() > limits.maxSize)
        return tooLarge(limits.maxSize).toError();
    QString text;
    if (const std::optional<XmlFault> fault = decode(bytes, text))
        return fault->toError();
    return parseBoundedXml(text, limits);
}

} // namespace KEO
