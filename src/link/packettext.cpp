#include "packettext.h"

#include "packetcodec.h"
#include "payloadscan.h"

#include <algorithm>
#include <charconv>

namespace KEO {

namespace {

bool passValue(PayloadScan &scan, int depth)
{
    const std::optional<quint32> type = scan.takeType();
    if (!type)
        return false;
    switch (*type) {
    case kIntType:
    case kUIntType:
        return scan.takeNumber().has_value();
    case kStringType:
        return scan.takeText().has_value();
    case kBitArrayType: {
        const std::optional<quint32> bits = scan.takeNumber();
        return bits && scan.take(bytesForBits(*bits));
    }
    case kListType: {
        const std::optional<quint32> count = scan.takeCount(kSmallestValue);
        bool isWhole = count && depth < kMaxListDepth;
        for (quint32 i = 0; isWhole && i < *count; ++i)
            isWhole = passValue(scan, depth + 1);
        return isWhole;
    }
    default:
        return false;
    }
}

// Writing goes through a bare pointer into room that was made for the whole line before.

void put(char *&out, QByteArrayView text)
{
    out = std::ranges::copy(text, out).out;
}

template <typename Number>
void putNumber(char *&out, Number number)
{
    constexpr int kMostDigits = 11;
    out = std::to_chars(out, out + kMostDigits, number).ptr;
}

void putHex(char *&out, QByteArrayView bytes)
{
    constexpr char kDigits[] = "0123456789abcdef";
    for (const char byte : bytes) {
        *out++ = kDigits[static_cast<unsigned char>(byte) >> 4];
        *out++ = kDigits[byte & 0xf];
    }
}

bool isNameLetter(char16_t unit)
{
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') ||
           (unit >= u'0' && unit <= u'9') || unit == u'_' || unit == u'-' || unit == u'.';
}

char16_t unitAt(QByteArrayView units, qsizetype byte)
{
    return qFromBigEndian<char16_t>(units.data() + byte);
}

void putQuoted(char *&out, QByteArrayView units)
{
    if (units.isNull()) // has a wire form of its own
        return put(out, "null");
    *out++ = '"';
    for (qsizetype i = 0; i < units.size(); i += 2) {
        const char16_t unit = unitAt(units, i);
        if (unit >= 0x20 && unit < 0x7f) {
            if (unit == u'"' || unit == u'\\')
                *out++ = '\\';
            *out++ = char(unit);
        } else {
            put(out, "\\u");
            putHex(out, units.sliced(i, 2));
        }
    }
    *out++ = '"';
}

void putName(char *&out, QByteArrayView units)
{
    char *const start = out;
    for (qsizetype i = 0; i < units.size(); i += 2) {
        const char16_t unit = unitAt(units, i);
        if (!isNameLetter(unit)) {
            out = start;
            return putQuoted(out, units);
        }
        *out++ = char(unit);
    }
    if (out == start)
        putQuoted(out, units);
}

/// The value is whole, and its lists are not too deep.
void putValue(char *&out, PayloadScan &scan)
{
    const quint32 type = *scan.takeType();
    switch (type) {
    case kIntType:
        return putNumber(out, qint32(*scan.takeNumber()));
    case kUIntType:
        putNumber(out, *scan.takeNumber());
        *out++ = 'u';
        return;
    case kStringType:
        return putQuoted(out, *scan.takeText());
    case kBitArrayType: {
        const quint32 bits = *scan.takeNumber();
        put(out, "bits(");
        putNumber(out, bits);
        *out++ = ':';
        putHex(out, *scan.take(bytesForBits(bits)));
        *out++ = ')';
        return;
    }
    case kListType: {
        const quint32 count = *scan.takeNumber();
        *out++ = '[';
        for (quint32 i = 0; i < count; ++i) {
            if (i > 0)
                *out++ = ',';
            putValue(out, scan);
        }
        *out++ = ']';
        return;
    }
    default:
        Q_UNREACHABLE();
    }
}

QByteArray wireUnits(const QString &text)
{
    if (text.isNull())
        return {};
    QByteArray units(text.size() * 2, Qt::Uninitialized);
    qToBigEndian<char16_t>(text.constData(), text.size(), units.data());
    return units;
}

/// Appends what \a write writes, three bytes at most for each of \a wireSize on the wire, and
/// little more.
template <typename Writer>
void appendWritten(QByteArray &line, qsizetype wireSize, Writer write)
{
    constexpr qsizetype kSpare = 16;
    const qsizetype start = line.size();
    line.resize(start + 3 * wireSize + kSpare);
    char *out = line.data() + start;
    write(out);
    line.truncate(out - line.data());
}

} // namespace

void appendNameText(QByteArray &line, const QString &name)
{
    const QByteArray units = wireUnits(name);
    appendWritten(line, units.size(), [&units](char *&out) { putName(out, units); });
}

void appendQuotedText(QByteArray &line, const QString &text)
{
    const QByteArray units = wireUnits(text);
    appendWritten(line, units.size(), [&units](char *&out) { putQuoted(out, units); });
}

PacketText::PacketText(QByteArrayView payload) : m_payload(payload)
{
    m_isMalformed = !takeApart();
}

bool PacketText::takeApart()
{
    static const QByteArray kRequest = wireUnits(QStringLiteral("request_id"));
    static const QByteArray kData = wireUnits(QStringLiteral("data_request_id"));
    PayloadScan scan(m_payload);
    const std::optional<quint32> count = scan.takeCount(kSmallestEntry);
    if (!count)
        return false;
    for (quint32 i = 0; i < *count; ++i) {
        const char *const start = scan.position();
        const std::optional<QByteArrayView> key = scan.takeText();
        const char *const value = scan.position();
        if (!key || !passValue(scan, 0))
            return false;
        const auto type = qFromBigEndian<quint32>(value);
        m_entries.append({*key, QByteArrayView(value, scan.position()), type == kBitArrayType});
        const bool isData = *key == kData;
        if ((!isData && *key != kRequest) || (type != kIntType && type != kUIntType))
            continue;
        if (!isData || !m_id || m_id->isData)
            m_id = {isData, qFromBigEndian<quint32>(scan.position() - sizeof(quint32)),
                    QByteArrayView(start, scan.position())};
    }
    return true;
}

void PacketText::appendTo(QByteArray &line) const
{
    appendWritten(line, m_payload.size(), [this](char *&out) {
        // What is long stands last, where it pushes nothing out of sight.
        for (const bool isBits : {false, true}) {
            for (auto entry = m_entries.crbegin(); entry != m_entries.crend(); ++entry) {
                if (entry->isBits != isBits)
                    continue;
                *out++ = ' ';
                putName(out, entry->key);
                *out++ = '=';
                PayloadScan value(entry->value);
                putValue(out, value);
            }
        }
    });
}

} // namespace KEO
