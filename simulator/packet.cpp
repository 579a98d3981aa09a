#include "packet.h"

#include <QBitArray>
#include <QtEndian>

namespace Sim {

namespace {

enum WireType : quint32 { Int = 2, UInt = 3, List = 9, String = 10, BitArray = 13 };

constexpr quint32 kNullString = 0xffffffff;
constexpr int kMaxListLevels = 2;

class FrameWriter final
{
public:
    void number(quint32 value)
    {
        char raw[4];
        qToBigEndian(value, raw);
        m_bytes.append(raw, 4);
    }

    void string(const QString &text)
    {
        number(quint32(text.size() * 2));
        for (const QChar unit : text) {
            m_bytes.append(char(unit.unicode() >> 8));
            m_bytes.append(char(unit.unicode() & 0xff));
        }
    }

    void value(const QVariant &value)
    {
        switch (value.typeId()) {
        case QMetaType::Int:
            head(Int);
            return number(quint32(value.toInt()));
        case QMetaType::UInt:
            head(UInt);
            return number(value.toUInt());
        case QMetaType::QString:
            head(String);
            return string(value.toString());
        case QMetaType::QBitArray:
            head(BitArray);
            return bits(value.toBitArray());
        case QMetaType::QVariantList: {
            const QVariantList list = value.toList();
            head(List);
            number(quint32(list.size()));
            for (const QVariant &entry : list)
                this->value(entry);
            return;
        }
        default:
            Q_ASSERT_X(false, "FrameWriter", "no wire type for this value");
        }
    }

    [[nodiscard]] const QByteArray &bytes() const { return m_bytes; }

private:
    void head(WireType type)
    {
        number(type);
        m_bytes.append('\0');
    }

    void bits(const QBitArray &bits)
    {
        number(quint32(bits.size()));
        m_bytes.append(bits.bits(), (bits.size() + 7) / 8);
    }

    QByteArray m_bytes;
};

/// Reads one frame's payload. After the first flaw every read gives nothing.
class FrameReader final
{
public:
    explicit FrameReader(QByteArrayView bytes) : m_bytes(bytes) {}

    Packet packet()
    {
        Packet packet;
        const quint32 entries = number();
        for (quint32 i = 0; i < entries && m_flaw.isEmpty(); ++i) {
            const QString key = string();
            packet.insert(key, value(0));
        }
        if (m_flaw.isEmpty() && !m_bytes.isEmpty())
            flaw(QStringLiteral("%1 bytes are left over").arg(m_bytes.size()));
        return m_flaw.isEmpty() ? packet : Packet();
    }

    [[nodiscard]] const QString &flawText() const { return m_flaw; }

private:
    void flaw(const QString &text)
    {
        if (m_flaw.isEmpty())
            m_flaw = text;
    }

    QByteArrayView raw(quint64 count)
    {
        if (!m_flaw.isEmpty() || count > quint64(m_bytes.size())) {
            flaw(QStringLiteral("it ends early"));
            return {};
        }
        const QByteArrayView head = m_bytes.first(qsizetype(count));
        m_bytes = m_bytes.sliced(qsizetype(count));
        return head;
    }

    quint32 number()
    {
        const QByteArrayView bytes = raw(4);
        return bytes.isEmpty() ? 0 : qFromBigEndian<quint32>(bytes.data());
    }

    QString string()
    {
        const quint32 size = number();
        if (size == kNullString)
            return {};
        if (size % 2 != 0)
            flaw(QStringLiteral("a text has an odd number of bytes"));
        const QByteArrayView bytes = raw(size);
        QString text;
        text.reserve(bytes.size() / 2);
        for (qsizetype i = 0; i + 1 < bytes.size(); i += 2)
            text.append(QChar(qFromBigEndian<quint16>(bytes.data() + i)));
        return text;
    }

    QVariant value(int level)
    {
        const quint32 type = number();
        raw(1); // null flag
        switch (type) {
        case Int:
            return int(number());
        case UInt:
            return number();
        case String:
            return string();
        case BitArray:
            return bits();
        case List:
            return list(level + 1);
        default:
            flaw(QStringLiteral("it holds a value of type %1").arg(type));
            return {};
        }
    }

    QBitArray bits()
    {
        const quint32 size = number();
        const QByteArrayView bytes = raw((quint64(size) + 7) / 8);
        return bytes.isEmpty() ? QBitArray() : QBitArray::fromBits(bytes.data(), qsizetype(size));
    }

    QVariantList list(int level)
    {
        QVariantList values;
        const quint32 size = number();
        if (level > kMaxListLevels)
            flaw(QStringLiteral("its lists are nested too deep"));
        for (quint32 i = 0; i < size && m_flaw.isEmpty(); ++i)
            values.append(value(level));
        return values;
    }

    QByteArrayView m_bytes;
    QString m_flaw;
};

} // namespace

QByteArray encodeFrame(const Packet &packet)
{
    FrameWriter payload;
    payload.number(quint32(packet.size()));
    for (auto entry = packet.cend(); entry != packet.cbegin();) {
        --entry;
        payload.string(entry.key());
        payload.value(entry.value());
    }
    FrameWriter frame;
    frame.number(quint32(payload.bytes().size()));
    return frame.bytes() + payload.bytes();
}

std::optional<FrameDecoder::Frame> FrameDecoder::take()
{
    constexpr int kLengthBytes = 4;
    if (!m_broken.isEmpty() || m_buffer.size() < kLengthBytes)
        return std::nullopt;
    const auto length = qFromBigEndian<qint32>(m_buffer.constData());
    if (length < 0 || length > kMaxLength) {
        m_broken = QStringLiteral("a frame says it has %1 bytes; 0 to %2 are allowed")
                       .arg(length)
                       .arg(kMaxLength);
        m_buffer.clear();
        return std::nullopt;
    }
    if (m_buffer.size() - kLengthBytes < length)
        return std::nullopt;
    FrameReader reader(QByteArrayView(m_buffer).sliced(kLengthBytes, length));
    Frame frame;
    frame.packet = reader.packet();
    frame.flaw = reader.flawText();
    m_buffer.remove(0, kLengthBytes + length);
    return frame;
}

} // namespace Sim
