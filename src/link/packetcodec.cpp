#include "packetcodec.h"

#include "payloadscan.h"

#include <QBitArray>
#include <QVariantList>
#include <QtEndian>

namespace KEO {

namespace {

class FrameWriter final
{
public:
    FrameWriter()
    {
        m_bytes.reserve(512); // no command is longer
        writeNumber(0);       // the length, known at the end
    }

    void writeNumber(quint32 number)
    {
        char bytes[4];
        qToBigEndian(number, bytes);
        m_bytes.append(bytes, sizeof bytes);
    }

    void writeText(const QString &text)
    {
        if (text.isNull()) {
            writeNumber(kNullString);
            return;
        }
        writeNumber(static_cast<quint32>(text.size() * 2));
        const qsizetype start = m_bytes.size();
        m_bytes.resize(start + text.size() * 2);
        qToBigEndian<char16_t>(text.constData(), text.size(), m_bytes.data() + start);
    }

    /// False for a value that has no wire form. \a depth counts the lists around the value.
    bool writeValue(const QVariant &value, int depth)
    {
        switch (value.typeId()) {
        case QMetaType::Int:
            writeType(kIntType);
            writeNumber(static_cast<quint32>(value.toInt()));
            return true;
        case QMetaType::UInt:
            writeType(kUIntType);
            writeNumber(value.toUInt());
            return true;
        case QMetaType::QVariantList:
            writeType(kListType);
            return depth < kMaxListDepth && writeList(value.toList(), depth + 1);
        case QMetaType::QString:
            writeType(kStringType);
            writeText(value.toString());
            return true;
        case QMetaType::QBitArray:
            writeType(kBitArrayType);
            writeBits(value.toBitArray());
            return true;
        default:
            return false;
        }
    }

    /// The frame with its length filled in, or nothing if it got too long.
    std::optional<QByteArray> finish() &&
    {
        const qsizetype payloadSize = m_bytes.size() - kLengthFieldSize;
        if (payloadSize > kMaxPayloadSize)
            return std::nullopt;
        qToBigEndian(static_cast<qint32>(payloadSize), m_bytes.data());
        return std::move(m_bytes);
    }

private:
    void writeType(quint32 type)
    {
        writeNumber(type);
        m_bytes.append('\0'); // the null flag
    }

    bool writeList(const QVariantList &list, int depth)
    {
        writeNumber(static_cast<quint32>(list.size()));
        for (const QVariant &value : list) {
            if (!writeValue(value, depth))
                return false;
        }
        return true;
    }

    void writeBits(const QBitArray &bits)
    {
        const auto count = static_cast<quint32>(bits.size());
        writeNumber(count);
        m_bytes.append(bits.bits(), bytesForBits(count));
    }

    QByteArray m_bytes;
};

/// Reads from the front of a payload; nothing when the bytes left do not hold what is asked for.
class PayloadReader final
{
public:
    explicit PayloadReader(QByteArrayView payload) : m_scan(payload) {}

    std::optional<quint32> readEntryCount() { return m_scan.takeCount(kSmallestEntry); }

    std::optional<QString> readText()
    {
        const std::optional<QByteArrayView> bytes = m_scan.takeText();
        if (!bytes)
            return std::nullopt;
        if (bytes->isNull())
            return QString();
        QString text(bytes->size() / 2, Qt::Uninitialized);
        qFromBigEndian<char16_t>(bytes->data(), text.size(), text.data());
        return text;
    }

    /// \a depth counts the lists around the value.
    std::optional<QVariant> readValue(int depth)
    {
        const std::optional<quint32> type = m_scan.takeType();
        if (!type)
            return std::nullopt;
        switch (*type) {
        case kIntType: {
            const std::optional<quint32> number = m_scan.takeNumber();
            return number ? std::optional(QVariant(static_cast<qint32>(*number))) : std::nullopt;
        }
        case kUIntType: {
            const std::optional<quint32> number = m_scan.takeNumber();
            return number ? std::optional(QVariant(*number)) : std::nullopt;
        }
        case kListType:
            return depth < kMaxListDepth ? readList(depth + 1) : std::nullopt;
        case kStringType: {
            const std::optional<QString> text = readText();
            return text ? std::optional(QVariant(*text)) : std::nullopt;
        }
        case kBitArrayType:
            return readBits();
        default:
            return std::nullopt;
        }
    }

private:
    std::optional<QVariant> readList(int depth)
    {
        const std::optional<quint32> count = m_scan.takeCount(kSmallestValue);
        if (!count)
            return std::nullopt;
        // Not reserved: each list inside a list could claim all the bytes left once more.
        QVariantList list;
        for (quint32 i = 0; i < *count; ++i) {
            std::optional<QVariant> value = readValue(depth);
            if (!value)
                return std::nullopt;
            list.append(std::move(*value));
        }
        return QVariant(list);
    }

    std::optional<QVariant> readBits()
    {
        const std::optional<quint32> count = m_scan.takeNumber();
        if (!count)
            return std::nullopt;
        const std::optional<QByteArrayView> bytes = m_scan.take(bytesForBits(*count));
        if (!bytes)
            return std::nullopt;
        return QVariant(QBitArray::fromBits(bytes->data(), *count));
    }

    PayloadScan m_scan;
};

} // namespace

std::optional<QByteArray> encodeFrame(const CmdPack &pack)
{
    FrameWriter writer;
    writer.writeNumber(static_cast<quint32>(pack.size()));
    for (auto entry = pack.cend(); entry != pack.cbegin();) {
        --entry;
        writer.writeText(entry.key());
        if (!writer.writeValue(entry.value(), 0))
            return std::nullopt;
    }
    return std::move(writer).finish();
}

std::optional<qint32> decodeLength(const char (&field)[kLengthFieldSize])
{
    const auto length = qFromBigEndian<qint32>(field);
    if (length < 0 || length > kMaxPayloadSize)
        return std::nullopt;
    return length;
}

std::optional<CmdPack> decodePayload(QByteArrayView payload)
{
    PayloadReader reader(payload);
    const std::optional<quint32> count = reader.readEntryCount();
    if (!count)
        return std::nullopt;
    CmdPack pack;
    for (quint32 i = 0; i < *count; ++i) {
        const std::optional<QString> key = reader.readText();
        std::optional<QVariant> value = key ? reader.readValue(0) : std::nullopt;
        if (!value)
            return std::nullopt;
        pack.insert(*key, *value);
    }
    return pack;
}

} // namespace KEO
