#pragma once

#include "signalentry.h"

#include <base/boundedxml.h>
#include <base/logging.h>
#include <base/result.h>

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>
#include <utility>

class QXmlStreamWriter;

namespace KEO {

/// The largest description file that is read, in bytes. Real ones stay far below 1 MB.
inline constexpr qint64 kMaxDescriptionSize = 16 * 1024 * 1024;

/// What a core description of any kind may cost.
inline constexpr XmlLimits kDescriptionLimits{
    .maxSize = kMaxDescriptionSize, .maxDepth = 64, .maxAttributes = 64, .maxNodes = 500'000};

/// Cores in one description. The chip's select word reaches 16.
inline constexpr int kMaxCores = 256;
/// Captured bits of all cores of a description together. It bounds the width of the register words,
/// and the lists of a core that captures its trigger signals: there a few elements can stand for
/// many signals.
inline constexpr qsizetype kMaxCapturedBits = 65'536;

/// Holds the cores of a description to the two bounds above while they are read one by one.
class CoreCount final
{
public:
    /// Counts a core that captures \a signals. An error of kind Limit when a bound is passed.
    [[nodiscard]] std::optional<Error> add(const QList<SignalEntry> &signals);

private:
    int m_cores = 0;
    qsizetype m_capturedBits = 0;
};

/// The bytes of the description at \a path. Errors: kind Limit for one that is too large. Any other
/// fault goes to the debug log and is told as \a openFailed, of kind File.
[[nodiscard]] Result<QByteArray> readDescriptionFile(const QString &path,
                                                     const QString &openFailed);

/// Opens a document in the form that the tool flow knows, up to where the cores follow. The root
/// stays open. \a xmlVersion is what the declaration says.
void beginDescription(QXmlStreamWriter &xml, const QString &xmlVersion, const QString &mode);

/// Writes a whole description in text mode. False when the file can't be written, with the reason
/// in the debug log; then an older file at \a path is untouched.
[[nodiscard]] bool writeDescriptionFile(const QString &path, const QByteArray &bytes);

/// What a description says of a design.
template <typename Cores>
struct Description
{
    Cores cores;
    QString id; ///< check value of the design
};

/// Hands a description to the caller of a loader, each of the three where he wants it, or a
/// refusal: no cores, and the reason in the debug log.
template <typename Cores>
Cores deliver(Result<Description<Cores>> description, QString *idOut, bool *okOut,
              QString *errorOut)
{
    const bool ok = bool(description);
    const QString error = ok ? QString() : description.error().message;
    if (!ok)
        qCDebug(lcConfig).noquote() << "Core description refused:" << error;
    if (okOut)
        *okOut = ok;
    if (errorOut)
        *errorOut = error;
    if (idOut)
        *idOut = ok ? description->id : QString();
    return ok ? std::move(description->cores) : Cores();
}

} // namespace KEO
