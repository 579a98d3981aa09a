#include "dataformat.h"

#include "radixtext.h"

#include <base/bitwords.h>

#include <QBitArray>
#include <QCoreApplication>
#include <QVarLengthArray>

#include <array>

namespace WaveMonitor {

namespace {

struct TypeTexts
{
    const char *name;
    const char *key;
};

constexpr std::array<TypeTexts, 6> kTexts{{
    {QT_TRANSLATE_NOOP("WaveMonitor::DataFormat", "Binary"), "binary"},
    {QT_TRANSLATE_NOOP("WaveMonitor::DataFormat", "Octal"), "octal"},
    {QT_TRANSLATE_NOOP("WaveMonitor::DataFormat", "Signed Decimal"), "signed decimal"},
    {QT_TRANSLATE_NOOP("WaveMonitor::DataFormat", "Unsigned Decimal"), "unsigned decimal"},
    {QT_TRANSLATE_NOOP("WaveMonitor::DataFormat", "Hexadecimal"), "hex"},
    {QT_TRANSLATE_NOOP("WaveMonitor::DataFormat", "Ascii"), "ASCII"},
}};

bool isKnown(DataFormat::Type type)
{
    return type >= DataFormat::Binary && type <= DataFormat::Ascii;
}

using Words = QVarLengthArray<quint64, 16>;

/// The value as words, least significant first.
Words wordsOf(const QBitArray &value)
{
    const qsizetype bits = value.size();
    const qsizetype count = (bits + 63) / 64;
    Words words(count);
    for (qsizetype i = 0; i < count; ++i)
        words[count - 1 - i] = KEO::reversedBits(KEO::bitWord(value, i * 64));
    // The value now ends at the top of the last word read; bring its last bit down to bit 0.
    if (const int excess = int(count * 64 - bits)) {
        for (qsizetype i = 0; i + 1 < count; ++i)
            words[i] = words[i] >> excess | words[i + 1] << (64 - excess);
        words[count - 1] >>= excess;
    }
    return words;
}

} // namespace

QString DataFormat::typeName(Type type)
{
    return isKnown(type)
               ? QCoreApplication::translate("WaveMonitor::DataFormat", kTexts[size_t(type)].name)
               : QString();
}

QString DataFormat::typeKey(Type type)
{
    return isKnown(type) ? QString::fromLatin1(kTexts[size_t(type)].key) : QString();
}

DataFormat::Type DataFormat::typeFromKey(QStringView key)
{
    for (size_t i = 0; i < kTexts.size(); ++i) {
        if (key == QLatin1String(kTexts[i].key))
            return Type(i);
    }
    return Hexadecimal;
}

QString DataFormat::toText(const QBitArray &value) const
{
    const Words words = wordsOf(value);
    QVarLengthArray<char, 256> text(radixTextCapacity(value.size()));
    const qsizetype length = radixText(m_type, words.constData(), value.size(), text.data());
    return QString::fromLatin1(text.constData(), length);
}

} // namespace WaveMonitor
