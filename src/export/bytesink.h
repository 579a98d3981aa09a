#pragma once

#include "decimaltext.h"

#include <QByteArrayView>
#include <QString>

#include <algorithm>
#include <memory>

class QIODevice;

namespace KEO {

/// Collects bytes in a buffer of fixed size in front of a device, and remembers if the device ever
/// refused some; from then on bytes are dropped. The device is borrowed.
class ByteSink final
{
public:
    /// The most that one call of room may ask for.
    static constexpr qsizetype kMaximumRoom = 4096;

    explicit ByteSink(QIODevice &device);
    ByteSink(const ByteSink &) = delete;
    ByteSink &operator=(const ByteSink &) = delete;

    /// At least \a bytes bytes to write to; `taken` then says where the text ends. The memory stays
    /// valid until the next call.
    [[nodiscard]] char *room(qsizetype bytes)
    {
        Q_ASSERT(bytes <= kMaximumRoom);
        if (m_limit - m_end < bytes)
            flush();
        return m_end;
    }
    void taken(char *end) { m_end = end; }

    void append(QByteArrayView bytes)
    {
        if (bytes.size() > kMaximumRoom) {
            appendLong(bytes);
            return;
        }
        taken(std::copy(bytes.begin(), bytes.end(), room(bytes.size())));
    }
    void appendText(const QString &text) { append(QByteArrayView(text.toUtf8())); }
    void appendNumber(qint64 number) { taken(writeDecimal(room(kDecimalRoom), number)); }

    /// False as soon as the device refused bytes; nobody needs to go on then.
    [[nodiscard]] bool isGood() const { return m_good; }
    /// Hands the rest to the device. True when it took everything, from the first byte on.
    [[nodiscard]] bool finish();

private:
    void flush();
    void appendLong(QByteArrayView bytes);

    QIODevice &m_device;
    std::unique_ptr<char[]> m_buffer;
    char *m_end;
    char *m_limit;
    bool m_good = true;
};

} // namespace KEO
