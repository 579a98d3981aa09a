#include "descriptionfile.h"

#include <base/wholefile.h>

#include <QCoreApplication>
#include <QXmlStreamWriter>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::DescriptionFile)
};

} // namespace

std::optional<Error> CoreCount::add(const QList<SignalEntry> &signals)
{
    ++m_cores;
    m_capturedBits += signalBits(signals);
    if (m_cores > kMaxCores)
        return Error{Error::Limit,
                     Text::tr("The description has more than %1 cores.").arg(kMaxCores)};
    if (m_capturedBits > kMaxCapturedBits)
        return Error{Error::Limit,
                     Text::tr("The cores capture more than %1 signals.").arg(kMaxCapturedBits)};
    return std::nullopt;
}

Result<QByteArray> readDescriptionFile(const QString &path, const QString &openFailed)
{
    const Result<QByteArray> bytes = readWholeFile(path, kMaxDescriptionSize, LineEnds::Native);
    if (bytes || bytes.error().kind == Error::Limit)
        return bytes;
    qCDebug(lcConfig).noquote() << bytes.error().message;
    return Error{Error::File, openFailed};
}

void beginDescription(QXmlStreamWriter &xml, const QString &xmlVersion, const QString &mode)
{
    xml.setAutoFormatting(true);
    xml.setAutoFormattingIndent(4);
    xml.writeStartDocument(xmlVersion);
    xml.writeStartElement(QStringLiteral("KEO_CONFIG"));
    xml.writeTextElement(QStringLiteral("Version"), QStringLiteral("3.0"));
    xml.writeTextElement(QStringLiteral("Mode"), mode);
}

bool writeDescriptionFile(const QString &path, const QByteArray &bytes)
{
    const std::optional<Error> error = writeWholeFile(path, bytes, LineEnds::Native);
    if (error)
        qCDebug(lcConfig).noquote() << error->message;
    return !error;
}

} // namespace KEO
