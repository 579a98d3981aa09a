#pragma once

#include "result.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QDomDocument>
#include <QString>
#include <QXmlStreamReader>

#include <memory>
#include <optional>

namespace KEO {

class MarkupFeed;

/// What a document may cost before it is turned into a tree, which takes some 300 bytes a node and
/// time in the square of depth and of the attributes of one tag. The defaults suit a data file with
/// long sample texts; a reader of smaller documents sets its own.
struct XmlLimits
{
    qsizetype maxSize = 256 * 1024 * 1024; ///< characters of the document, or bytes before decoding
    int maxDepth = 256;                    ///< elements inside one another
    int maxAttributes = 256;               ///< of one tag
    int maxNodes = 1'000'000; ///< elements, texts, comments and the like; an attribute counts as 3
};

/// Why and where a document was refused. Line and column count from 1; 0:0 means the whole text.
struct XmlFault
{
    Error::Kind kind = Error::Format; ///< Format for text that is no XML, Limit for XML beyond them
    QString message;
    qint64 line = 0;
    qint64 column = 0;

    /// The message with " at <line>:<column>" behind it.
    [[nodiscard]] Error toError() const;
};

/// Walks a document token by token without a tree, and stops at its first fault of form and where
/// it leaves the limits. A DOCTYPE may name a document type but declare nothing: declared entities
/// and default attributes grow a short text without bound. Names keep their prefix; namespaces mean
/// nothing.
class BoundedXmlReader final
{
public:
    /// Takes the encoding of the byte order mark, else of the XML declaration, else UTF-8. Bytes
    /// that the encoding does not know are a fault. Shares \a bytes. A long text of "0" and "1"
    /// alone that is the first in an element \a digitElement may be kept out of the tokens, see
    /// digits().
    explicit BoundedXmlReader(const QByteArray &bytes, const XmlLimits &limits = {},
                              const QByteArray &digitElement = {});
    explicit BoundedXmlReader(const QString &text, const XmlLimits &limits = {});
    ~BoundedXmlReader();

    /// Reads the next token. False behind the last one and at a fault.
    bool next();
    /// The present token. Not to be moved on.
    [[nodiscard]] const QXmlStreamReader &token() const { return m_xml; }
    /// The text that stands directly behind the present start tag and is no token of its own, as a
    /// part of the bytes; null if there is none.
    [[nodiscard]] QByteArrayView digits() const { return m_digits; }
    /// Elements that are open, the present start or end tag's included.
    [[nodiscard]] int depth() const { return m_depth; }
    /// Raises the limit on nodes for an owner that has its own bounds on what it takes.
    void allowNodes(int more) { m_allowedNodes += more; }
    /// Lets the owner refuse a document for a reason of its own, at the present place.
    void refuse(Error::Kind kind, const QString &message);
    [[nodiscard]] const std::optional<XmlFault> &fault() const { return m_fault; }

private:
    void start(const QString &text);
    [[nodiscard]] bool checkAhead();
    void takeIntoAccount();
    void takeDigits();

    const XmlLimits m_limits;
    std::unique_ptr<MarkupFeed> m_feed; ///< what m_xml reads, unless it has a text of its own
    QXmlStreamReader m_xml;
    std::optional<XmlFault> m_fault;
    QByteArrayView m_digits;
    qint64 m_startTags = 0;
    qint64 m_digitLine = 0;    ///< the last one from which digits were kept out
    qint64 m_digitColumns = 0; ///< how many of that line, up to the present place
    qint64 m_nodes = 0;
    qint64 m_allowedNodes = m_limits.maxNodes;
    int m_depth = 0;
    bool m_leaves = false; ///< the present token is an end tag
};

/// The encoding that a document's byte order mark or its first bytes show, else the one that its
/// XML declaration names, as it is spelled there; empty where nothing tells it.
QByteArray claimedXmlEncoding(const QByteArray &bytes);

/// Reads \a text into a tree, once a pass without a tree has shown that it is well-formed and
/// within \a limits, see BoundedXmlReader.
///
/// The XML declaration's version and encoding are not looked at, because the text is decoded
/// already and our own files say version "1", which the parser refuses.
///
/// The error's message ends in " at <line>:<column>" (from 1; 0:0 where the whole text is meant).
/// Its kind is Format for text that is no XML and Limit for XML that the limits refuse.
Result<QDomDocument> parseBoundedXml(const QString &text, const XmlLimits &limits = {});

/// The same on bytes, in the encoding of their byte order mark, else of the XML declaration, else
/// UTF-8. Bytes that the encoding does not know are an error.
Result<QDomDocument> parseBoundedXml(const QByteArray &bytes, const XmlLimits &limits = {});

} // namespace KEO
