#pragma once

#include "boundedxml.h"

#include <QByteArray>
#include <QIODevice>

#include <deque>
#include <optional>

namespace KEO {

/// Hands the bytes of a document, UTF-8, to the XML parser, no further than they have been checked
/// and without the runs of "0" and "1" behind the start tags of one element: the parser would turn
/// each digit into a character of its text.
class MarkupFeed final : public QIODevice
{
public:
    /// Shares \a bytes. Keeps runs in the text unless \a element has a name.
    MarkupFeed(const QByteArray &bytes, const XmlLimits &limits, const QByteArray &element);

    /// Keeps the check ahead of what was handed out, and by more than a token. A document that is
    /// refused early is not looked at to its end.
    void checkAhead();
    /// What there is against the document so far; nothing of it is handed out from then on.
    [[nodiscard]] const std::optional<XmlFault> &fault() const { return m_fault; }
    /// The run that was left out behind start tag \a tag, counted from 1; mostly none. To be asked
    /// in the order of tags. Part of the bytes.
    QByteArrayView takeRun(qint64 tag);

    [[nodiscard]] bool isSequential() const override { return true; }

protected:
    qint64 readData(char *to, qint64 size) override;
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    struct Run
    {
        qsizetype begin = 0;
        qsizetype size = 0;
        qint64 tag = 0;
    };

    void check(qsizetype until);
    qsizetype leaveStartTag(qsizetype begin, qsizetype end);
    [[nodiscard]] bool isOfElement(qsizetype begin) const;
    qsizetype nextStop();

    const QByteArray m_bytes;
    const XmlLimits m_limits;
    const QByteArray m_element;
    std::optional<XmlFault> m_fault;
    qsizetype m_checked = 0; ///< what lies before may be parsed
    qsizetype m_read = 0;
    qint64 m_tags = 0;      ///< start tags in what is checked
    std::deque<Run> m_runs; ///< those not taken yet
    size_t m_ahead = 0;     ///< the last ones of them, which m_read has not come to
};

} // namespace KEO
