#include "bytesink.h"

#include <QIODevice>

namespace KEO {

namespace {

constexpr qsizetype kBufferSize = 128 * 1024; // stays in the second-level cache
static_assert(kBufferSize >= ByteSink::kMaximumRoom);

} // namespace

ByteSink::ByteSink(QIODevice &device)
    : m_device(device),
      m_buffer(std::make_unique<char[]>(kBufferSize)),
      m_end(m_buffer.get()),
      m_limit(m_end + kBufferSize)
{
}

bool ByteSink::finish()
{
    flush();
    return m_good;
}

void ByteSink::flush()
{
    const qint64 size = m_end - m_buffer.get();
    m_end = m_buffer.get();
    if (m_good && size > 0)
        m_good = m_device.write(m_buffer.get(), size) == size;
}

void ByteSink::appendLong(QByteArrayView bytes)
{
    for (qsizetype at = 0; at < bytes.size(); at += kMaximumRoom)
        append(bytes.sliced(at, std::min(kMaximumRoom, bytes.size() - at)));
}

} // namespace KEO
