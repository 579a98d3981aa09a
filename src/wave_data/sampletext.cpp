#include "sampletext.h"

#include <QDomElement>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace WaveMonitor {

namespace {

constexpr int kByteSamples = 8;
using ByteText = std::array<char16_t, kByteSamples>;

constexpr std::array<ByteText, 256> makeByteTexts()
{
    std::array<ByteText, 256> texts{};
    for (size_t byte = 0; byte < texts.size(); ++byte) {
        for (size_t bit = 0; bit < kByteSamples; ++bit)
            texts[byte][bit] = byte >> bit & 1 ? u'1' : u'0';
    }
    return texts;
}

constexpr std::array<ByteText, 256> kByteTexts = makeByteTexts();

QStringList ownTexts(const QDomElement &element)
{
    QStringList texts;
    for (QDomNode node = element.firstChild(); !node.isNull(); node = node.nextSibling()) {
        if (node.isText() || node.isCDATASection())
            texts.append(node.nodeValue());
    }
    return texts;
}

/// Packs characters into bytes, across the borders of the pieces of text they come in.
class SamplePacker final
{
public:
    explicit SamplePacker(qsizetype samples) : m_bytes(size_t(samples + 7) / 8) {}

    void append(QStringView text)
    {
        const char16_t *next = text.utf16();
        const char16_t *end = next + text.size();
        while (next != end && m_samples % kByteSamples)
            appendOne(*next++);
        for (; end - next >= kByteSamples; next += kByteSamples, m_samples += kByteSamples) {
            unsigned byte = 0;
            for (int bit = 0; bit < kByteSamples; ++bit)
                byte |= unsigned(next[bit] == u'1') << bit;
            m_bytes[size_t(m_samples) / kByteSamples] = char(byte);
        }
        while (next != end)
            appendOne(*next++);
    }

    /// To be called first, with "0" and "1" alone.
    void appendDigits(QByteArrayView digits)
    {
        const char *next = digits.begin();
        for (; digits.end() - next >= kByteSamples; next += kByteSamples) {
            const auto eight = qFromLittleEndian<quint64>(next) & 0x0101010101010101U;
            // Each product of a digit with one bit of the factor lands on the digit's own place.
            m_bytes[size_t(m_samples) / kByteSamples] = char(eight * 0x0102040810204080U >> 56);
            m_samples += kByteSamples;
        }
        while (next != digits.end())
            appendOne(uchar(*next++));
    }

    [[nodiscard]] QBitArray samples() const
    {
        return QBitArray::fromBits(m_bytes.data(), m_samples);
    }

private:
    void appendOne(char16_t unit)
    {
        if (unit == u'1')
            m_bytes[size_t(m_samples) / kByteSamples] |= char(1 << m_samples % kByteSamples);
        ++m_samples;
    }

    std::vector<char> m_bytes;
    qsizetype m_samples = 0;
};

} // namespace

QString ownText(const QDomElement &element)
{
    return ownTexts(element).join(QString());
}

QString sampleText(const QBitArray &samples)
{
    QString text(samples.size(), Qt::Uninitialized);
    const char *bytes = samples.bits();
    char16_t *out = reinterpret_cast<char16_t *>(text.data());
    for (qsizetype left = samples.size(); left > 0; left -= kByteSamples, out += kByteSamples) {
        const ByteText &eight = kByteTexts[uchar(*bytes++)];
        std::memcpy(out, eight.data(),
                    size_t(std::min<qsizetype>(left, kByteSamples)) * sizeof *out);
    }
    return text;
}

QBitArray readSamples(const QDomElement &element)
{
    return readSamples({}, ownTexts(element));
}

QBitArray readSamples(QByteArrayView digits, const QStringList &texts)
{
    qsizetype samples = digits.size();
    for (const QString &text : texts)
        samples += text.size();
    SamplePacker packer(samples);
    packer.appendDigits(digits);
    for (const QString &text : texts)
        packer.append(text);
    return packer.samples();
}

} // namespace WaveMonitor
