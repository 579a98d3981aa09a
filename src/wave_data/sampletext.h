#pragma once

#include <QBitArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>

class QDomElement;

namespace WaveMonitor {

/// Text and CDATA directly inside \a element, joined. Child elements count for nothing.
[[nodiscard]] QString ownText(const QDomElement &element);

/// One character a sample, "0" or "1", sample 0 first.
[[nodiscard]] QString sampleText(const QBitArray &samples);

/// Reads back what sampleText wrote from the text directly inside \a element: as many samples as
/// there are characters, and every character but "1" is 0.
[[nodiscard]] QBitArray readSamples(const QDomElement &element);
/// The same from the pieces of that text, the first of which may be \a digits, "0" and "1" alone.
[[nodiscard]] QBitArray readSamples(QByteArrayView digits, const QStringList &texts);

} // namespace WaveMonitor
