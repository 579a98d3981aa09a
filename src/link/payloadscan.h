#pragma once

#include <QByteArrayView>
#include <QtEndian>

#include <optional>

namespace KEO {

// Type numbers on the wire.
inline constexpr quint32 kIntType = 2;
inline constexpr quint32 kUIntType = 3;
inline constexpr quint32 kListType = 9;
inline constexpr quint32 kStringType = 10;
inline constexpr quint32 kBitArrayType = 13;

/// Stands in place of the size of a null text.
inline constexpr quint32 kNullString = 0xFFFFFFFF;

// Type number, null flag, and four bytes that every one of the types has at least.
inline constexpr quint32 kSmallestValue = 4 + 1 + 4;
inline constexpr quint32 kSmallestEntry = 4 + kSmallestValue;

constexpr quint32 bytesForBits(quint32 bits)
{
    return bits / 8 + (bits % 8 != 0 ? 1 : 0);
}

/// Takes a payload apart from its front, without a copy. Each function gives nothing when the bytes
/// left do not hold what is asked for.
class PayloadScan
{
public:
    explicit PayloadScan(QByteArrayView payload) : m_rest(payload) {}

    [[nodiscard]] const char *position() const { return m_rest.data(); }

    std::optional<QByteArrayView> take(quint32 size)
    {
        if (size > static_cast<quint64>(m_rest.size()))
            return std::nullopt;
        const QByteArrayView bytes = m_rest.first(size);
        m_rest = m_rest.sliced(size);
        return bytes;
    }

    std::optional<quint32> takeNumber()
    {
        const std::optional<QByteArrayView> bytes = take(4);
        if (!bytes)
            return std::nullopt;
        return qFromBigEndian<quint32>(bytes->data());
    }

    /// A count of things that take at least \a smallest bytes each, all of them still to come.
    std::optional<quint32> takeCount(quint32 smallest)
    {
        const std::optional<quint32> count = takeNumber();
        if (!count || *count > static_cast<quint64>(m_rest.size()) / smallest)
            return std::nullopt;
        return count;
    }

    /// The code units of a text, big-endian; a null text gives a null view.
    std::optional<QByteArrayView> takeText()
    {
        const std::optional<quint32> size = takeNumber();
        if (!size)
            return std::nullopt;
        if (*size == kNullString)
            return QByteArrayView();
        return *size % 2 == 0 ? take(*size) : std::nullopt;
    }

    /// The type number of a value; its null flag is passed over.
    std::optional<quint32> takeType()
    {
        const std::optional<quint32> type = takeNumber();
        return type && take(1) ? type : std::nullopt;
    }

private:
    QByteArrayView m_rest;
};

} // namespace KEO
