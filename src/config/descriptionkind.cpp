#include "descriptionkind.h"

#include "descriptionfile.h"

#include <base/wholefile.h>

#include <QDomDocument>

namespace KEO {

namespace {

/// A description with a byte that its declared encoding does not have still tells its kind: the
/// tool flow writes net names in the encoding of its own system.
Result<QDomDocument> parseDescription(const QByteArray &bytes)
{
    Result<QDomDocument> document = parseBoundedXml(bytes, kDescriptionLimits);
    if (document)
        return document;
    constexpr QByteArrayView mark("\xEF\xBB\xBF");
    const bool marked = QByteArrayView(bytes).startsWith(mark);
    const QByteArrayView content = QByteArrayView(bytes).sliced(marked ? mark.size() : 0);
    return parseBoundedXml(QString::fromLatin1(content), kDescriptionLimits);
}

DescriptionKind kindOfMode(const QDomElement &mode)
{
    if (mode.isNull() || mode.text() == QLatin1String("Standard"))
        return DescriptionKind::Standard;
    if (mode.text() == QLatin1String("Lite"))
        return DescriptionKind::Lite;
    qCDebug(lcConfig) << "a description for an unknown kind of core:" << mode.text().left(80);
    return DescriptionKind::Unknown;
}

} // namespace

DescriptionKind descriptionKind(const QString &path)
{
    const Result<QByteArray> bytes = readWholeFile(path, kMaxDescriptionSize, LineEnds::Native);
    if (!bytes) {
        qCDebug(lcConfig).noquote() << bytes.error().message;
        return DescriptionKind::Unknown;
    }
    const Result<QDomDocument> document = parseDescription(*bytes);
    if (!document) {
        qCDebug(lcConfig).noquote() << path << document.error().message;
        return DescriptionKind::Unknown;
    }
    return kindOfMode(document->documentElement().firstChildElement(QStringLiteral("Mode")));
}

} // namespace KEO
