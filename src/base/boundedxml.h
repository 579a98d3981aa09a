#pragma once

#include "result.h"

#include <QDomDocument>
#include <QString>

class QByteArray;

namespace KEO {

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

/// Reads \a text into a tree, once a pass without a tree has shown that it is well-formed and
/// within \a limits. A DOCTYPE may name a document type but declare nothing: declared entities and
/// default attributes grow a short text without bound. Names keep their prefix; namespaces mean
/// nothing.
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
