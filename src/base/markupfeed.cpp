#include "markupfeed.h"

#include "markupcheck.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace KEO {

namespace {

constexpr qsizetype kCheckAhead = 64 * 1024; // bytes
constexpr qsizetype kShortestRun = 64;       // bytes: others are no work for the parser

/// Bytes from \a begin on that are "0" or "1".
qsizetype digitsFrom(const char *begin, const char *end)
{
    constexpr quint64 zeros = 0x3030303030303030U;
    constexpr quint64 lastBits = 0x0101010101010101U;
    const char *at = begin;
    for (quint64 eight = 0; end - at >= qsizetype(sizeof eight); at += sizeof eight) {
        std::memcpy(&eight, at, sizeof eight);
        if ((eight & ~lastBits) != zeros)
            break;
    }
    while (at != end && (*at == '0' || *at == '1'))
        ++at;
    return at - begin;
}

} // namespace

MarkupFeed::MarkupFeed(const QByteArray &bytes, const XmlLimits &limits, const QByteArray &element)
    : m_bytes(bytes), m_limits(limits), m_element(element)
{
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

void MarkupFeed::checkAhead()
{
    if (m_checked <= m_read + kCheckAhead)
        check(m_read + 2 * kCheckAhead);
}

void MarkupFeed::check(qsizetype until)
{
    if (!m_fault)
        m_fault = MarkupCheck::checkMarkup(
            QByteArrayView(m_bytes), m_limits, m_checked, until,
            [this](qsizetype begin, qsizetype end) { return leaveStartTag(begin, end); });
}

/// Only a run that is the whole text up to the next tag is left out, so that no text is torn apart.
qsizetype MarkupFeed::leaveStartTag(qsizetype begin, qsizetype end)
{
    ++m_tags;
    if (m_element.isEmpty() || m_bytes[end - 1] == '/' || !isOfElement(begin))
        return end;
    const char *text = m_bytes.constData() + end + 1;
    const qsizetype size = digitsFrom(text, m_bytes.constEnd());
    if (size < kShortestRun || end + 1 + size == m_bytes.size() || text[size] != '<')
        return end;
    m_runs.push_back({end + 1, size, m_tags});
    ++m_ahead;
    return end + 1 + size;
}

bool MarkupFeed::isOfElement(qsizetype begin) const
{
    const QByteArrayView tag = QByteArrayView(m_bytes).sliced(begin + 1);
    if (!tag.startsWith(m_element))
        return false;
    const char behind = tag[m_element.size()]; // the tag has an end
    return behind == '>' || behind == ' ' || behind == '\t' || behind == '\n' || behind == '\r';
}

QByteArrayView MarkupFeed::takeRun(qint64 tag)
{
    Q_ASSERT(m_runs.empty() || m_runs.front().tag >= tag); // the parser sees the same tags
    if (m_runs.size() == m_ahead || m_runs.front().tag != tag)
        return {};
    const Run run = m_runs.front();
    m_runs.pop_front();
    return QByteArrayView(m_bytes).sliced(run.begin, run.size);
}

/// How far may be read in one piece.
qsizetype MarkupFeed::nextStop()
{
    if (m_read >= m_checked)
        check(m_read + 2 * kCheckAhead);
    const qsizetype checked = std::min(m_checked, m_bytes.size());
    return m_ahead == 0 ? checked : m_runs[m_runs.size() - m_ahead].begin;
}

qint64 MarkupFeed::readData(char *to, qint64 size)
{
    const qsizetype stop = nextStop();
    if (m_fault)
        return -1;
    const qsizetype taken = std::min<qsizetype>(size, stop - m_read);
    std::memcpy(to, m_bytes.constData() + m_read, size_t(taken));
    m_read += taken;
    if (m_ahead != 0 && m_read == stop)
        m_read += m_runs[m_runs.size() - m_ahead--].size;
    return taken;
}

} // namespace KEO
