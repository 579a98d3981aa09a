#include "boundedxml.h"

#include "markupcheck.h"
#include "markupfeed.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QStringConverter>

#include <utility>

namespace KEO {
namespace {

using namespace Qt::StringLiterals;

/// An attribute is a node with a text node of its own and a place in a hash.
constexpr int kNodesOfAttribute = 3;

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::BoundedXml)
};

XmlFault tooLarge(qsizetype allowed)
{
    return {Error::Limit, Text::tr("The document is larger than %1 bytes").arg(allowed)};
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

QByteArray encodingOf(const QByteArray &bytes)
{
    const QByteArray claimed = claimedXmlEncoding(bytes);
    return claimed.isEmpty() ? QByteArray("UTF-8") : claimed;
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

QByteArray claimedXmlEncoding(const QByteArray &bytes)
{
    if (const auto detected = QStringConverter::encodingForData(bytes, u'<'))
        return QStringConverter::nameForEncoding(*detected);
    const QString start = QString::fromLatin1(bytes.first(qMin<qsizetype>(bytes.size(), 1024)));
    return declaration().match(start).captured(1).toLatin1();
}

Error XmlFault::toError() const
{
    // Some of the parser's messages are sentences, and this one goes on.
    const QString text = message.endsWith(u'.') ? message.chopped(1) : message;
    return {kind,
            Text::tr("%1 at %2:%3").arg(text, QString::number(line), QString::number(column))};
}

BoundedXmlReader::BoundedXmlReader(const QByteArray &bytes, const XmlLimits &limits,
                                   const QByteArray &digitElement)
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
        m_feed = std::make_unique<MarkupFeed>(bytes, limits, digitElement);
        m_xml.setDevice(m_feed.get());
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
        m_fault = MarkupCheck::checkMarkup(QStringView(text), m_limits, position, text.size(),
                                           [](qsizetype, qsizetype end) { return end; });
    m_xml.addData(text);
    m_xml.setNamespaceProcessing(false);
}

BoundedXmlReader::~BoundedXmlReader() = default;

bool BoundedXmlReader::next()
{
    if (m_fault || m_xml.atEnd() || !checkAhead())
        return false;
    if (std::exchange(m_leaves, false))
        --m_depth;
    if (!std::exchange(m_digits, {}).isNull())
        ++m_nodes;
    m_xml.readNext();
    takeIntoAccount();
    if (m_feed && m_feed->fault() && m_xml.hasError()) // why the parser got no more
        m_fault = m_feed->fault();
    if (m_xml.hasError() && !m_fault)
        refuse(Error::Format, m_xml.errorString());
    return !m_fault;
}

bool BoundedXmlReader::checkAhead()
{
    if (m_feed && !m_fault) {
        m_feed->checkAhead();
        m_fault = m_feed->fault();
    }
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
        takeDigits();
    }
    if (m_depth > m_limits.maxDepth)
        refuse(Error::Limit,
               Text::tr("Elements are nested more than %1 deep").arg(m_limits.maxDepth));
    else if (m_nodes > m_allowedNodes)
        refuse(Error::Limit,
               Text::tr("The document has more than %1 elements, attributes and texts")
                   .arg(m_allowedNodes));
}

void BoundedXmlReader::takeDigits()
{
    if (!m_feed)
        return;
    m_digits = m_feed->takeRun(++m_startTags);
    if (m_digits.isNull())
        return;
    if (std::exchange(m_digitLine, m_xml.lineNumber()) != m_xml.lineNumber())
        m_digitColumns = 0;
    m_digitColumns += m_digits.size();
}

void BoundedXmlReader::refuse(Error::Kind kind, const QString &message)
{
    if (m_fault)
        return;
    const qint64 line = m_xml.lineNumber();
    qint64 column = m_xml.columnNumber();
    // The parser has not seen the digits that were left out before the present place; where it
    // tells no place within the line, it says 0.
    if (line == m_digitLine && column > 0)
        column += m_digitColumns - m_digits.size();
    m_fault = XmlFault{kind, message, line, column};
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
