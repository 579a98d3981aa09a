#pragma once

#include "cmdpack.h"

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

namespace KEO {

// The wire form of a packet, both directions; docs/link-protocol.md has the layout byte by byte.
// A frame is a length field and a payload; the payload is the map. All integers are big-endian.

/// Bytes of the length field, which does not count itself.
inline constexpr qint32 kLengthFieldSize = 4;
/// Most bytes a payload may have. A whole capture section needs a few kilobytes.
inline constexpr qint32 kMaxPayloadSize = 16 * 1024 * 1024;
/// Most lists inside one another: a list of plain values is one level.
inline constexpr int kMaxListDepth = 4;

/// The whole frame of \a pack, its length field included, entries from the greatest key to the
/// smallest. Nothing if a value is none of the five wire types, lists nest too deep, or the payload
/// gets too long.
[[nodiscard]] std::optional<QByteArray> encodeFrame(const CmdPack &pack);

/// The payload size that a length field announces; nothing if it is negative or above
/// kMaxPayloadSize. After such a field the frame boundaries of a connection are lost for good.
[[nodiscard]] std::optional<qint32> decodeLength(const char (&field)[kLengthFieldSize]);

/// The packet in a complete payload; nothing if the bytes are malformed. Safe for any bytes: takes
/// memory only for what has arrived. Bytes behind the last entry are ignored, as is a value's null
/// flag and the padding of a bit array; of equal keys the last one counts.
[[nodiscard]] std::optional<CmdPack> decodePayload(QByteArrayView payload);

} // namespace KEO
