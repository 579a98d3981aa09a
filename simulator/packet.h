#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QVariant>

#include <optional>

namespace Sim {

/// Keys and values of one message. Values are int, uint, QString, QBitArray, or a QVariantList of
/// these.
using Packet = QMap<QString, QVariant>;

/// Bytes of a packet on the wire, all integers big-endian:
///
///     frame   int32 length of the rest, uint32 entries, then entries from the greatest key down
///     entry   string key, value
///     string  uint32 byte count (0xffffffff: null), UTF-16 units
///     value   uint32 type, uint8 null flag, then by type:
///             2 int32 | 3 uint32 | 9 uint32 count, values | 10 string
///             13 uint32 bit count, bytes, bit i under 1 << (i % 8) of byte i / 8
QByteArray encodeFrame(const Packet &packet);

/// Cuts a client's bytes into frames and reads them. Nothing is believed before the bytes are
/// there.
class FrameDecoder final
{
public:
    /// Longest frame a client may send, in bytes. Real ones have a few hundred.
    static constexpr int kMaxLength = 1 << 20;

    struct Frame
    {
        Packet packet;
        QString flaw; ///< not empty: the content makes no sense and `packet` is empty
    };

    void feed(const QByteArray &bytes) { m_buffer += bytes; }
    /// The next complete frame. Nothing when more bytes are needed, or when the stream is broken.
    std::optional<Frame> take();
    /// Set when a length made no sense: where the next frame begins is then unknown.
    [[nodiscard]] const QString &broken() const { return m_broken; }

private:
    QByteArray m_buffer;
    QString m_broken;
};

} // namespace Sim
