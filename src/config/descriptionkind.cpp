#include "descriptionkind.h"

#include "descriptionfile.h"

#include <base/wholefile.h>

#include <QCoreApplication>
#include <QDomDocument>

namespace KEO {

namespace {

constexpr int kShownLength = 80; // of a text that is none of ours

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

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::DescriptionKind)
};

Result<DescriptionKind> kindOfMode(const QDomElement &mode)
{
    if (mode.isNull() || mode.text() == QLatin1String("Standard"))
        return DescriptionKind::Standard;
    if (mode.text() == QLatin1String("Lite"))
        return DescriptionKind::Lite;
    return Error{Error::Format, Text::tr("It is for an unknown kind of core, '%1'; known are "
                                         "Standard and Lite.")
                                    .arg(mode.text().left(kShownLength))};
}

} // namespace

Result<DescriptionHead> readDescriptionHead(const QByteArray &bytes)
{
    const Result<QDomDocument> document = parseDescription(bytes);
    if (!document)
        return document.error();
    const QDomElement root = document->documentElement();
    const Result<DescriptionKind> kind = kindOfMode(root.firstChildElement(QStringLiteral("Mode")));
    if (!kind)
        return kind.error();
    return DescriptionHead{*kind, root.firstChildElement(QStringLiteral("Version")).text()};
}

Result<DescriptionKind> readDescriptionKind(const QString &path)
{
    const Result<QByteArray> bytes = readWholeFile(path, kMaxDescriptionSize, LineEnds::Native);
    if (!bytes)
        return bytes.error();
    const Result<DescriptionHead> head = readDescriptionHead(*bytes);
    if (!head)
        return head.error();
    return head->kind;
}

DescriptionKind descriptionKind(const QString &path)
{
    const Result<DescriptionKind> kind = readDescriptionKind(path);
    if (kind)
        return *kind;
    qCDebug(lcConfig).noquote() << path << kind.error().message;
    return DescriptionKind::Unknown;
}

} // namespace KEO
